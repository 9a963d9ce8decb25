# Generated tables: one source file for each message family, compiled from the descriptions in the
# family's room.

# quorvane_generate_family(<list> <family> <description>...)
#
# Appends the family's generated source to <list>. The descriptions are handed to the compiler in
# the order given: a type stands before its users.
function(quorvane_generate_family list family)
    set(descriptions ${ARGN})
    list(TRANSFORM descriptions PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE dependencies)
    if(QUORVANE_DESCRIBE)
        set(describe ${QUORVANE_DESCRIBE})
    else()
        set(describe quorvane_describe)
    endif()
    set(output ${PROJECT_BINARY_DIR}/generated/${family}.cpp)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/generated)
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
