# Cross build for 64-bit Windows: mingw-w64 with POSIX threads, all runtimes linked statically.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(ZLIB_USE_STATIC_LIBS ON)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libgomp.a
    OUTPUT_VARIABLE gomp OUTPUT_STRIP_TRAILING_WHITESPACE)
set(OpenMP_gomp_LIBRARY ${gomp} CACHE FILEPATH "")

find_program(VARNOW_WINE NAMES wine)
if(VARNOW_WINE)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${VARNOW_WINE})
    # At random addresses one process of some thousands lacks room for Wine's shared page and fails.
    execute_process(COMMAND setarch -R true RESULT_VARIABLE refused OUTPUT_QUIET ERROR_QUIET)
    if(refused EQUAL 0)
        list(PREPEND CMAKE_CROSSCOMPILING_EMULATOR setarch -R)
    endif()
endif()
