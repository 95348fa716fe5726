# The target morvenqvr::morvenqvr, from where this file lies: <folder of libraries>/cmake/morvenqvr.
get_filename_component(morvenqvr_libraries "${CMAKE_CURRENT_LIST_DIR}/../.." ABSOLUTE)
find_path(morvenqvr_headers morvenqvr.h NO_CACHE REQUIRED NO_DEFAULT_PATH
    PATHS "${morvenqvr_libraries}/../include" "${morvenqvr_libraries}/../../include")
if(NOT TARGET morvenqvr::morvenqvr)
    add_library(morvenqvr::morvenqvr SHARED IMPORTED)
    set_target_properties(morvenqvr::morvenqvr PROPERTIES
        IMPORTED_LOCATION "${morvenqvr_libraries}/libmorvenqvr.so"
        IMPORTED_SONAME libmorvenqvr.so.1
        INTERFACE_INCLUDE_DIRECTORIES "${morvenqvr_headers}")
endif()
unset(morvenqvr_libraries)
unset(morvenqvr_headers)
