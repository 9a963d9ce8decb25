# The families that this build has, and their generated tables: one source file for each, compiled
# from its descriptions.

set(QUORVANE_FAMILIES "all" CACHE STRING
    "The message families to build, a list of names of src/families/families.cmake, or all")

# Notes an entry of the list of families; see src/families/families.cmake.
function(quorvane_family name)
    cmake_parse_arguments(PARSE_ARGV 1 family "" TITLE DESCRIPTIONS)
    list(TRANSFORM family_DESCRIPTIONS PREPEND ${name}/ REGEX "^[^/]*$")
    list(TRANSFORM family_DESCRIPTIONS PREPEND src/families/)
    set(QUORVANE_KNOWN_FAMILIES ${QUORVANE_KNOWN_FAMILIES} ${name} PARENT_SCOPE)
    set(QUORVANE_TITLE_${name} ${family_TITLE} PARENT_SCOPE)
    set(QUORVANE_DESCRIPTIONS_${name} ${family_DESCRIPTIONS} PARENT_SCOPE)
endfunction()

# Sets QUORVANE_BUILT_FAMILIES to those asked for, in the order of the list.
function(quorvane_choose_families)
    list(JOIN QUORVANE_KNOWN_FAMILIES ", " known)
    set(built)
    foreach(name IN LISTS QUORVANE_KNOWN_FAMILIES)
        if(QUORVANE_DESCRIPTIONS_${name} AND (QUORVANE_FAMILIES STREQUAL "all"
                                              OR name IN_LIST QUORVANE_FAMILIES))
            list(APPEND built ${name})
        endif()
    endforeach()
    foreach(name IN LISTS QUORVANE_FAMILIES)
        if(NOT name STREQUAL "all" AND NOT name IN_LIST QUORVANE_KNOWN_FAMILIES)
            message(FATAL_ERROR "QUORVANE_FAMILIES: unknown family '${name}'; "
                                "the families are ${known}")
        elseif(NOT name STREQUAL "all" AND NOT name IN_LIST built)
            message(FATAL_ERROR "QUORVANE_FAMILIES: the family '${name}' is not described yet")
        endif()
    endforeach()
    if(NOT built)
        message(FATAL_ERROR "QUORVANE_FAMILIES names no family; the families are ${known}")
    endif()
    set(QUORVANE_BUILT_FAMILIES ${built} PARENT_SCOPE)
endfunction()

# quorvane_family_variable(<variable> <family>): the name of the family's tables in C++.
function(quorvane_family_variable variable name)
    string(SUBSTRING ${name} 0 1 first)
    string(TOUPPER ${first} first)
    string(SUBSTRING ${name} 1 -1 rest)
    set(${variable} k${first}${rest}Family PARENT_SCOPE)
endfunction()

# Writes the list for the sources to <folder>/families/family_list.def.
function(quorvane_write_family_list folder)
    set(rows)
    foreach(name IN LISTS QUORVANE_KNOWN_FAMILIES)
        set(files ${QUORVANE_DESCRIPTIONS_${name}})
        list(TRANSFORM files REPLACE ".+" "\"\\0\"")
        list(JOIN files ", " files)
        set(cells "\"${name}\", \"${QUORVANE_TITLE_${name}}\", ${files}")
        if(name IN_LIST QUORVANE_BUILT_FAMILIES)
            quorvane_family_variable(variable ${name})
            string(APPEND rows "QUORVANE_FAMILY(${variable}, ${cells})\n")
        else()
            string(APPEND rows "QUORVANE_LEFT_OUT_FAMILY(${cells})\n")
        endif()
    endforeach()
    file(CONFIGURE OUTPUT ${folder}/families/family_list.def @ONLY CONTENT
"// Generated from src/families/families.cmake.
//
// QUORVANE_FAMILY(variable, name, title, descriptions...)  a family of this build
// QUORVANE_LEFT_OUT_FAMILY(name, title, descriptions...)   a family that it leaves out
@rows@")
endfunction()

# quorvane_generate_family(<list> <family> <folder>)
#
# Appends the family's source file, generated in <folder>, to <list>.
function(quorvane_generate_family list family folder)
    set(descriptions ${QUORVANE_DESCRIPTIONS_${family}})
    list(TRANSFORM descriptions PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE dependencies)
    if(QUORVANE_DESCRIBE)
        set(describe ${QUORVANE_DESCRIBE})
    else()
        set(describe quorvane_describe)
    endif()
    set(output ${folder}/${family}.cpp)
    # Run at the project's root, so that names in messages are short and the output is the same
    # wherever the project stands.
    add_custom_command(
        OUTPUT ${output}
        COMMAND ${describe} ${output} ${descriptions}
        DEPENDS ${dependencies} ${describe}
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        COMMENT "Compiling the descriptions of ${family}"
        VERBATIM)
    set(${list} ${${list}} ${output} PARENT_SCOPE)
endfunction()

include(src/families/families.cmake)
quorvane_choose_families()
quorvane_write_family_list(${PROJECT_BINARY_DIR}/generated)
