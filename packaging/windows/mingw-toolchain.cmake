# Windows (64 bit) from Debian: mingw-w64 with POSIX threads.
# DRAVENNA_WINDOWS_CACHE is the folder that packaging/windows/build fills: qt/ (Qt for Windows) and libraries/ (small
# ones). Qt itself is built with this file too, before that folder has anything in it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
# The same inputs give the same bytes.
set(CMAKE_EXE_LINKER_FLAGS_INIT -Wl,--no-insert-timestamp)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -Wl,--no-insert-timestamp)

if(NOT DRAVENNA_WINDOWS_CACHE)
  if(DEFINED ENV{DRAVENNA_QT_CACHE})
    set(DRAVENNA_WINDOWS_CACHE $ENV{DRAVENNA_QT_CACHE})
  elseif(DEFINED ENV{XDG_CACHE_HOME})
    set(DRAVENNA_WINDOWS_CACHE $ENV{XDG_CACHE_HOME}/dravenna-qt-windows)
  else()
    set(DRAVENNA_WINDOWS_CACHE $ENV{HOME}/.cache/dravenna-qt-windows)
  endif()
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES DRAVENNA_WINDOWS_CACHE)

# Headers, libraries and packages only of the target; programs (moc, rcc) only of the build machine.
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${DRAVENNA_WINDOWS_CACHE}/qt ${DRAVENNA_WINDOWS_CACHE}/libraries
    ${DRAVENNA_WINDOWS_CACHE}/gettext)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

execute_process(COMMAND gcc -print-multiarch OUTPUT_VARIABLE hostTriplet OUTPUT_STRIP_TRAILING_WHITESPACE)
set(QT_HOST_PATH /usr CACHE PATH "Qt of the build machine (moc, rcc, uic)")
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/${hostTriplet}/cmake CACHE PATH "CMake packages of that Qt")
