# varnow_add_test(NAME PROGRAM ARGUMENT...): a test that runs a program built here. Standard input
# is empty, so that the pause of a refusal cannot wait. Programs for Windows run under Wine, in a
# prefix of the build's own. WRITES FILE names what the program writes at its end: a refusal ends it
# early with status 0, which must not pass.
set(VARNOW_TEST_ENVIRONMENT GTEST_BRIEF=1 LC_ALL=C.UTF-8)
if(CMAKE_CROSSCOMPILING AND WIN32)
    list(APPEND VARNOW_TEST_ENVIRONMENT
        WINEPREFIX=${PROJECT_BINARY_DIR}/wine WINEDEBUG=-all DISPLAY=)
    # One session serves all tests: the helpers of a session hold the pipe of whoever started it,
    # and CTest would wait for them after each test. Its own output goes away for the same reason.
    add_test(NAME wine_start COMMAND sh -c
        "{ wineserver -p; wine cmd /c exit; } </dev/null >/dev/null 2>&1")
    add_test(NAME wine_stop COMMAND sh -c
        "{ wineserver -k; wineserver -w; } </dev/null >/dev/null 2>&1; true")
    set_tests_properties(wine_start PROPERTIES FIXTURES_SETUP wine)
    set_tests_properties(wine_stop PROPERTIES FIXTURES_CLEANUP wine)
    set_tests_properties(wine_start wine_stop PROPERTIES
        TIMEOUT 300 ENVIRONMENT "${VARNOW_TEST_ENVIRONMENT}")
elseif(VARNOW_SANITIZE MATCHES thread)
    # The OpenMP runtime is not instrumented; Archer tells the sanitizer of its barriers and locks.
    file(GLOB archer /usr/lib/llvm-*/lib/libarcher.so)
    list(APPEND VARNOW_TEST_ENVIRONMENT
        OMP_TOOL_LIBRARIES=${archer} TSAN_OPTIONS=ignore_noninstrumented_modules=1)
endif()

# What a program built here sees before an absolute path of this machine: Wine has a drive for it.
set(VARNOW_PATH_PREFIX "")
if(CMAKE_CROSSCOMPILING AND WIN32)
    set(VARNOW_PATH_PREFIX Z:)
endif()

function(varnow_add_test name program)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "WORKING_DIRECTORY;WRITES" "")
    set(run "exec \"$@\" </dev/null")
    if(arg_WRITES)
        set(run "rm -f '${arg_WRITES}'; \"$@\" </dev/null && test -s '${arg_WRITES}'")
    endif()
    add_test(NAME ${name}
        COMMAND sh -c "${run}" sh
            ${CMAKE_CROSSCOMPILING_EMULATOR} ${program} ${arg_UNPARSED_ARGUMENTS}
        WORKING_DIRECTORY ${arg_WORKING_DIRECTORY})
    set_tests_properties(${name} PROPERTIES
        TIMEOUT 900 ENVIRONMENT "${VARNOW_TEST_ENVIRONMENT}")
    if(CMAKE_CROSSCOMPILING AND WIN32)
        set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED wine)
    endif()
endfunction()
