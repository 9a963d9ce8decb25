# Options, and what every target of this project is built with. A project that takes this one in
# as a subproject gets the libraries alone, without warnings as errors.

option(QUORVANE_TOOL "Build the command-line tool" ${PROJECT_IS_TOP_LEVEL})
if(CMAKE_CROSSCOMPILING OR WIN32)
    set(QUORVANE_CAPTURE_DEFAULT OFF)
else()
    set(QUORVANE_CAPTURE_DEFAULT ON)
endif()
option(QUORVANE_CAPTURE "Let the tool read captures (libpcap, zlib)" ${QUORVANE_CAPTURE_DEFAULT})
option(QUORVANE_TESTS "Build the tests and the fuzz targets" ${PROJECT_IS_TOP_LEVEL})
option(QUORVANE_BENCHMARKS "Build the benchmarks" OFF)
option(QUORVANE_INSTALL "Offer an install target" ${PROJECT_IS_TOP_LEVEL})
option(QUORVANE_WARNINGS_AS_ERRORS "Refuse code with warnings" ${PROJECT_IS_TOP_LEVEL})
option(QUORVANE_FUZZ "Link the fuzz targets with libFuzzer (clang)" OFF)
set(QUORVANE_SANITIZE "" CACHE STRING "Sanitizers for the whole build, e.g. address,undefined")
set(QUORVANE_DESCRIBE "" CACHE FILEPATH "Ready description compiler, for cross builds")

# The forms of the library: both, or the one that BUILD_SHARED_LIBS asks for.
if(NOT DEFINED BUILD_SHARED_LIBS)
    set(QUORVANE_FORMS quorvane quorvane_static)
elseif(BUILD_SHARED_LIBS)
    set(QUORVANE_FORMS quorvane)
else()
    set(QUORVANE_FORMS quorvane_static)
endif()

if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
    if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
        set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Kind of build" FORCE)
    endif()
endif()

# Language level, warnings and sanitizers of a target of this project.
function(quorvane_target target)
    target_compile_features(${target} PRIVATE cxx_std_20)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /utf-8)
    else()
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion
                                                 -Wsign-conversion -Wshadow)
        if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
            # Mistaken about std::string's operator+ in these versions.
            target_compile_options(${target} PRIVATE -Wno-restrict)
        endif()
    endif()
    if(QUORVANE_WARNINGS_AS_ERRORS)
        set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ON)
    endif()
    if(QUORVANE_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${QUORVANE_SANITIZE}
                                                 -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${QUORVANE_SANITIZE})
        if(QUORVANE_SANITIZE MATCHES "address.*undefined")
            # The address sanitizer finds these as well; they make up half of the build's time.
            target_compile_options(${target} PRIVATE -fno-sanitize=null,vptr,object-size)
        endif()
        if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
            # Instrumented code misleads this warning.
            target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
        endif()
    endif()
    # Folders that hold no code under test set QUORVANE_IS_HARNESS, so that new code is only what is
    # new there.
    if(QUORVANE_FUZZ AND NOT QUORVANE_IS_HARNESS)
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
endfunction()

# The same for a program in C.
function(quorvane_c_target target)
    if(QUORVANE_SANITIZE)
        # Parts of clang's sanitizers come with its C++ alone.
        set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
    endif()
    quorvane_target(${target})
    set_target_properties(${target} PROPERTIES C_STANDARD 11 C_STANDARD_REQUIRED ON
                                               C_EXTENSIONS OFF)
endfunction()

# The same for what sees the sources' own headers: parts of the library, the compiler, tests.
function(quorvane_internal_target target)
    quorvane_target(${target})
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src
                                                 ${PROJECT_SOURCE_DIR}/include
                                                 ${PROJECT_BINARY_DIR}/generated)
    target_compile_definitions(${target} PRIVATE QUORVANE_BUILDING)
    set_target_properties(
        ${target} PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
                             VISIBILITY_INLINES_HIDDEN ON)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # Nobody replaces functions of the library, so that calls within it may be inlined, as other
        # compilers take for granted.
        target_compile_options(${target} PRIVATE -fno-semantic-interposition)
    endif()
endfunction()
