# The bridge to R is compiled where the headers of R and Rcpp are. The library is not linked with R:
# see varnow/rbridge/weak_symbols.h.
set(VARNOW_R AUTO CACHE STRING "The bridge to R: AUTO (where R and Rcpp are), ON or OFF")
set_property(CACHE VARNOW_R PROPERTY STRINGS AUTO ON OFF)

# varnow_find_r(OUT): the folders of the headers of R and Rcpp, or nothing.
function(varnow_find_r out)
    set(${out} "" PARENT_SCOPE)
    find_program(R_EXECUTABLE R)
    if(NOT R_EXECUTABLE)
        return()
    endif()
    execute_process(COMMAND ${R_EXECUTABLE} --vanilla -s -e
        "cat(R.home('include'), system.file('include', package = 'Rcpp'), sep = ';')"
        OUTPUT_VARIABLE folders ERROR_QUIET)
    list(LENGTH folders n)
    if(n EQUAL 2)
        list(GET folders 0 r)
        list(GET folders 1 rcpp)
        if(EXISTS ${r}/Rinternals.h AND EXISTS ${rcpp}/Rcpp.h)
            set(${out} ${folders} PARENT_SCOPE)
        endif()
    endif()
endfunction()

set(VARNOW_R_INCLUDE "")
if(VARNOW_R STREQUAL "AUTO")
    # the R of this machine is none for another system, and it knows nothing of sanitizers
    if(NOT CMAKE_CROSSCOMPILING AND NOT WIN32 AND NOT VARNOW_SANITIZE)
        varnow_find_r(VARNOW_R_INCLUDE)
    endif()
elseif(VARNOW_R)
    varnow_find_r(VARNOW_R_INCLUDE)
    if(NOT VARNOW_R_INCLUDE)
        message(FATAL_ERROR "VARNOW_R is ON, but R or its package Rcpp was not found")
    endif()
endif()
if(VARNOW_R_INCLUDE)
    message(STATUS "Bridge to R: ${VARNOW_R_INCLUDE}")
    list(APPEND sources varnow/rbridge/conversions.cpp)
    list(APPEND headers ${PROJECT_SOURCE_DIR}/varnow/rbridge/conversions.h)
    list(TRANSFORM VARNOW_R_INCLUDE PREPEND "-isystem" OUTPUT_VARIABLE options)
    # without these some of Rcpp's failures abort or jump instead of throwing what is promised
    set_source_files_properties(varnow/rbridge/conversions.cpp PROPERTIES
        COMPILE_OPTIONS "${options}" COMPILE_DEFINITIONS "NDEBUG;RCPP_NO_UNWIND_PROTECT")
else()
    message(STATUS "Bridge to R: left out")
endif()
