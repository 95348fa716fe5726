# The builds of every kernel, from the one list of slots: QVR_SLOTS in table order, and for each slot QVR_FLAGS_<slot>,
# QVR_SHARED_<slot> (whose function stands in for a shared one) and QVR_EMULATOR_<slot>.
set(QVR_SLOT_LIST ${PROJECT_SOURCE_DIR}/frame/slots.def)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${QVR_SLOT_LIST})
file(STRINGS ${QVR_SLOT_LIST} rows REGEX "^QVR_SLOT")
set(QVR_SLOTS)
foreach(row IN LISTS rows)
    string(REGEX MATCH "\\(([a-z0-9]+), ([a-z0-9]+), [^,]+, [^,]+, \"(.*)\", \"(.*)\"\\)" row "${row}")
    list(APPEND QVR_SLOTS ${CMAKE_MATCH_1})
    set(QVR_SHARED_${CMAKE_MATCH_1} ${CMAKE_MATCH_2})
    set(QVR_EMULATOR_${CMAKE_MATCH_1} ${CMAKE_MATCH_4})
    separate_arguments(QVR_FLAGS_${CMAKE_MATCH_1} UNIX_COMMAND "${CMAKE_MATCH_3}")
endforeach()

# Warnings are errors here: a kernel that needs one silenced should say so in place.
set(QVR_WARNINGS -Wall -Wextra -Werror -Wshadow -Wconversion -Wno-sign-conversion -Wno-psabi -Wno-unused-function)

# What every translation unit of the library shares. Contraction is off because many functions promise two roundings.
# Comparisons stay the processor's: with denormals counted as zeros, equal floats need not have equal bits.
# Unwind tables let a debugger, a profiler and a crash handler see the caller through a kernel. Shadow stacks cost no
# instruction. Marks at branch targets (-fcf-protection=branch) would cost one in each function, and Linux checks none
# for user programs.
set(QVR_COMMON_FLAGS -ffp-contract=off -fdenormal-fp-math=dynamic -fno-math-errno -fno-exceptions -fno-rtti
    -fno-threadsafe-statics -fvisibility=hidden -fasynchronous-unwind-tables -fcf-protection=return -ffunction-sections ${QVR_WARNINGS})

# Kernels are written over the slot's vectors; what the automatic vectoriser adds to their tails is only code size, and a
# fill loop must not become a call of memset.
set(QVR_KERNEL_FLAGS ${QVR_COMMON_FLAGS} -fno-vectorize -fno-slp-vectorize
    -fno-builtin-memset -fno-builtin-memcpy -fopenmp)

# Optimisation belongs to the kernels, whatever the build type says; only a debug build takes it back.
set(QVR_OPTIMISE $<$<NOT:$<CONFIG:Debug>>:-O3>)

# What the fuzzer watches: all slots come from one source, and the counters of seven would be most of its work.
set(QVR_WATCHED_SLOTS mx u8 l9)
set(QVR_WATCHED $<$<BOOL:${QVR_FUZZ}>:-fsanitize=fuzzer-no-link>)

# Slots that a sanitizer's build does not look into and whose tests it skips: all come from one source. They are compiled
# to be linked only.
set(QVR_LEFT_OUT "" CACHE STRING "Slots that are built without the sanitizer")

function(qvr_make_slot_targets)
    foreach(slot IN LISTS QVR_SLOTS)
        add_library(slot_${slot} OBJECT)
        target_compile_options(slot_${slot} PRIVATE ${QVR_KERNEL_FLAGS} ${QVR_FLAGS_${slot}} ${QVR_OPTIMISE})
        target_compile_definitions(slot_${slot} PRIVATE QVR_SLOT_PREFIX=${slot}
            QVR_SLOT_SHARED_PREFIX=${QVR_SHARED_${slot}})
        target_link_libraries(slot_${slot} PRIVATE declarations)
        target_precompile_headers(slot_${slot} PRIVATE ${PROJECT_SOURCE_DIR}/frame/simd.h)
        if(slot IN_LIST QVR_LEFT_OUT)
            target_compile_options(slot_${slot} PRIVATE -fno-sanitize=all -g0 -O0)
        elseif(slot IN_LIST QVR_WATCHED_SLOTS)
            target_compile_options(slot_${slot} PRIVATE ${QVR_WATCHED})
        endif()
    endforeach()
    add_library(slot_plain OBJECT)
    target_compile_options(slot_plain PRIVATE ${QVR_OPTIMISE}
        $<$<COMPILE_LANGUAGE:CXX>:${QVR_COMMON_FLAGS} ${QVR_WATCHED} -fopenmp>)
    target_link_libraries(slot_plain PRIVATE declarations)
endfunction()

# qvr_sources(ALL_SLOTS a.cpp ... SHARED b.cpp ... PLAIN c.cpp ... ONLY_<slot> d.cpp ...)
#   ALL_SLOTS  compiled for every slot
#   SHARED     compiled for the slots that do not share another's function
#   PLAIN      compiled once, for the baseline
#   ONLY_l9    (any slot) a file for that level alone; sum_l9.cpp stands in the place of sum.cpp there
function(qvr_sources)
    set(lists ALL_SLOTS SHARED PLAIN)
    foreach(slot IN LISTS QVR_SLOTS)
        list(APPEND lists ONLY_${slot})
    endforeach()
    cmake_parse_arguments(A "" "" "${lists}" ${ARGN})
    foreach(slot IN LISTS QVR_SLOTS)
        set(files ${A_ALL_SLOTS})
        if(slot STREQUAL QVR_SHARED_${slot})
            list(APPEND files ${A_SHARED})
        endif()
        list(TRANSFORM A_ONLY_${slot} REPLACE "_${slot}(\\.[a-z]+)$" "\\1" OUTPUT_VARIABLE replaced)
        list(REMOVE_ITEM files ${replaced})
        list(APPEND files ${A_ONLY_${slot}})
        list(TRANSFORM files PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
        target_sources(slot_${slot} PRIVATE ${files})
    endforeach()
    list(TRANSFORM A_PLAIN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    target_sources(slot_plain PRIVATE ${A_PLAIN})
endfunction()
