# varnow_public_headers(OUT): varnow.h and what it includes, directly or not. The other headers are
# the library's own affair and are not installed.
function(varnow_public_headers out)
    set(found "")
    set(queue varnow/varnow.h)
    while(queue)
        list(POP_FRONT queue header)
        set(path ${PROJECT_SOURCE_DIR}/${header})
        if(NOT path IN_LIST found AND EXISTS ${path})
            list(APPEND found ${path})
            file(STRINGS ${path} includes REGEX "^#include <varnow/")
            list(FILTER includes EXCLUDE REGEX "/rbridge/") # installed where it is built
            list(TRANSFORM includes REPLACE ".*<(.*)>.*" "\\1")
            list(APPEND queue ${includes})
        endif()
    endwhile()
    set(${out} ${found} PARENT_SCOPE)
endfunction()
