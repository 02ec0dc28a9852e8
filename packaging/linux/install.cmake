# What an installed Dravenna has beside its programs, in two components that share no file: `window` and `tool`.
# DRAVENNA_SITE, where the pages and pictures of docs/ are published, is named in the AppStream file if it is given.
set(DRAVENNA_SITE "" CACHE STRING "Address of the published docs folder, without a slash at the end")

function(dravenna_page name component)
  configure_file(${CMAKE_SOURCE_DIR}/docs/${name}.1.in ${CMAKE_BINARY_DIR}/${name}.1 @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/${name}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
endfunction()

set(share ${CMAKE_INSTALL_DATADIR})
set(doc ${CMAKE_INSTALL_DATAROOTDIR}/doc)

if(DRAVENNA_TOOL)
  set(completions ${CMAKE_SOURCE_DIR}/packaging/completions)
  dravenna_page(dravenna-lxf tool)
  # Found beside the program's folder; another place than share needs DRAVENNA_COMMANDS.
  install(FILES src/tool/run/commands.json DESTINATION share/dravenna COMPONENT tool)
  install(FILES ${completions}/dravenna-lxf.bash DESTINATION ${share}/bash-completion/completions RENAME dravenna-lxf
          COMPONENT tool)
  install(FILES ${completions}/_dravenna-lxf DESTINATION ${share}/zsh/site-functions COMPONENT tool)
  install(FILES ${completions}/dravenna-lxf.fish DESTINATION ${share}/fish/vendor_completions.d COMPONENT tool)
  set(pages README dravenna-lxf one-script tree counting new-version po git ci checks)
  list(TRANSFORM pages REPLACE "(.+)" "docs/\\1.md")
  install(FILES ${pages} DESTINATION ${doc}/dravenna-lxf COMPONENT tool)
  unset(pages)
endif()

if(DRAVENNA_DESKTOP)
  set(id org.orvane.Dravenna)
  set(icons ${CMAKE_SOURCE_DIR}/src/desktop/icons)
  string(TIMESTAMP today "%Y-%m-%d" UTC) # SOURCE_DATE_EPOCH if that is set
  execute_process(
    COMMAND awk -v today=${today} -f ${CMAKE_SOURCE_DIR}/packaging/linux/releases.awk ${CMAKE_SOURCE_DIR}/CHANGELOG.md
    OUTPUT_VARIABLE releases COMMAND_ERROR_IS_FATAL ANY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md)
  if(DRAVENNA_SITE)
    set(pages "  <url type=\"homepage\">${DRAVENNA_SITE}</url>
  <screenshots>
    <screenshot type=\"default\">
      <caption>A script with a text that is being edited</caption>
      <image>${DRAVENNA_SITE}/pictures/typed.png</image>
    </screenshot>
  </screenshots>\n")
  endif()
  configure_file(packaging/linux/${id}.metainfo.xml.in ${CMAKE_BINARY_DIR}/${id}.metainfo.xml @ONLY)

  dravenna_page(dravenna window)
  install(FILES packaging/linux/${id}.desktop DESTINATION ${share}/applications COMPONENT window)
  install(FILES ${CMAKE_BINARY_DIR}/${id}.metainfo.xml DESTINATION ${share}/metainfo COMPONENT window)
  install(FILES packaging/linux/${id}.xml DESTINATION ${share}/mime/packages COMPONENT window)
  foreach(size 16 24 32 48 64 128 256)
    install(FILES ${icons}/dravenna-${size}.png DESTINATION ${share}/icons/hicolor/${size}x${size}/apps
            RENAME dravenna.png COMPONENT window)
  endforeach()
  install(FILES ${icons}/dravenna.svg DESTINATION ${share}/icons/hicolor/scalable/apps COMPONENT window)
  install(DIRECTORY lang DESTINATION ${share}/dravenna COMPONENT window)
  install(FILES README.md DESTINATION ${doc}/dravenna COMPONENT window)
  install(FILES docs/window.md DESTINATION ${doc}/dravenna/docs COMPONENT window)
  install(DIRECTORY docs/pictures DESTINATION ${doc}/dravenna/docs COMPONENT window PATTERN make EXCLUDE)
  install(FILES samples/gate.txt DESTINATION ${doc}/dravenna/examples COMPONENT window)
endif()

# A package has its own way to tell of these.
install(FILES LICENSE CHANGELOG.md DESTINATION ${doc}/dravenna COMPONENT licence)
