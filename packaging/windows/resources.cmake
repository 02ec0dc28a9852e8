# dravenna_windows_resources(TARGET DESCRIPTION SVG): icon, version and manifest for an executable. The icon is drawn from
# the SVG file when the target is built.
enable_language(RC)
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
find_program(ICOTOOL icotool REQUIRED)

set(DRAVENNA_WINDOWS_RESOURCES ${CMAKE_CURRENT_LIST_DIR})

function(dravenna_windows_resources target description svg)
  set(folder ${CMAKE_BINARY_DIR}/windows-resources)
  set(icon ${folder}/dravenna.ico)
  set(manifest ${folder}/dravenna.manifest)
  set(script ${folder}/${target}.rc)
  string(REPLACE "." "," versionNumbers ${PROJECT_VERSION}.0)
  configure_file(${DRAVENNA_WINDOWS_RESOURCES}/dravenna.manifest.in ${manifest} @ONLY)
  configure_file(${DRAVENNA_WINDOWS_RESOURCES}/dravenna.rc.in ${script} @ONLY)

  # The large picture is stored as PNG, the others as bitmaps, as the shell expects them.
  set(draw)
  set(bitmaps)
  foreach(size 16 20 24 32 40 48 64 256)
    list(APPEND draw COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -o ${folder}/${size}.png ${svg})
    if(NOT size EQUAL 256)
      list(APPEND bitmaps ${folder}/${size}.png)
    endif()
  endforeach()
  if(NOT TARGET dravenna_icon)
    add_custom_command(OUTPUT ${icon} ${draw} COMMAND ${ICOTOOL} -c -o ${icon} ${bitmaps} -r ${folder}/256.png
                       DEPENDS ${svg} COMMENT "Drawing dravenna.ico" VERBATIM)
    add_custom_target(dravenna_icon DEPENDS ${icon})
  endif()
  add_dependencies(${target} dravenna_icon)
  set_source_files_properties(${script} PROPERTIES OBJECT_DEPENDS "${icon};${manifest}")
  target_sources(${target} PRIVATE ${script})
endfunction()
