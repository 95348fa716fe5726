# Declarations for the library's own code, made from the public header and the families' lists of exports: without
# comments, a file a family, and touched only when they change. So a change of the reference text compiles nothing, and a
# new function compiles its family.
set(QVR_FAMILIES frame vector elementary fourier filters image)
set(QVR_DECLARATIONS ${PROJECT_BINARY_DIR}/declarations)
set(script ${PROJECT_SOURCE_DIR}/scripts/declarations.sh)
set(header ${PROJECT_SOURCE_DIR}/include/morvenqvr.h)
foreach(family IN LISTS QVR_FAMILIES)
    set(forms public functions slot_tables)
    if(family STREQUAL "frame")
        list(PREPEND forms types)
    endif()
    list(TRANSFORM forms REPLACE "(.+)" "${QVR_DECLARATIONS}/${family}/\\1.h" OUTPUT_VARIABLE files)
    add_custom_command(OUTPUT ${QVR_DECLARATIONS}/${family}/stamp BYPRODUCTS ${files}
        COMMAND ${script} ${header} ${PROJECT_SOURCE_DIR}/${family}/exports.def ${QVR_DECLARATIONS}/${family} ${forms}
        DEPENDS ${script} ${PROJECT_SOURCE_DIR}/scripts/declarations.awk ${header} ${PROJECT_SOURCE_DIR}/${family}/exports.def
        VERBATIM)
    list(APPEND stamps ${QVR_DECLARATIONS}/${family}/stamp)
endforeach()
# All of them, under the public header's name.
list(TRANSFORM QVR_FAMILIES REPLACE "(.+)" "#include \"\\1/public.h\"" OUTPUT_VARIABLE lines)
list(JOIN lines "\n" lines)
file(CONFIGURE OUTPUT ${QVR_DECLARATIONS}/morvenqvr.h CONTENT "#pragma once\n${lines}\n")
add_custom_target(declaration_files DEPENDS ${stamps})
add_library(declarations INTERFACE)
target_include_directories(declarations INTERFACE ${PROJECT_SOURCE_DIR} ${QVR_DECLARATIONS})
add_dependencies(declarations declaration_files)
