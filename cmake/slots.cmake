# The seven builds of every kernel, in table order. A slot is an instruction level and a prefix for its symbols.
set(QVR_SLOTS mx m7 u8 n8 y8 e9 l9)
set(QVR_FLAGS_mx "")
set(QVR_FLAGS_m7 -msse3)
set(QVR_FLAGS_u8 -mssse3)
set(QVR_FLAGS_n8 -mssse3 -mmovbe)
set(QVR_FLAGS_y8 -msse4.1)
set(QVR_FLAGS_e9 -mavx)
set(QVR_FLAGS_l9 -mavx2 -mfma -mbmi -mbmi2)

# Warnings are errors here: a kernel that needs one silenced should say so in place.
set(QVR_WARNINGS -Wall -Wextra -Werror -Wshadow -Wconversion -Wno-sign-conversion -Wno-psabi -Wno-unused-function)

# What every translation unit of the library shares. Contraction is off because many functions promise two roundings.
# Comparisons stay the processor's: with denormals counted as zeros, equal floats need not have equal bits.
set(QVR_COMMON_FLAGS -ffp-contract=off -fdenormal-fp-math=dynamic -fno-math-errno -fno-exceptions -fno-rtti
    -fno-threadsafe-statics -fvisibility=hidden -fno-asynchronous-unwind-tables -ffunction-sections ${QVR_WARNINGS})

# Kernels are written over the slot's vectors; what the automatic vectoriser adds to their tails is only code size, and a
# fill loop must not become a call of memset.
set(QVR_KERNEL_FLAGS ${QVR_COMMON_FLAGS} -fno-vectorize -fno-slp-vectorize
    -fno-builtin-memset -fno-builtin-memcpy -fopenmp)

set(QVR_OPTIMISE $<$<CONFIG:Release>:-O3>)

# What the fuzzer watches: all slots come from one source, and the counters of seven would be most of its work.
set(QVR_WATCHED_SLOTS mx u8 l9)
set(QVR_WATCHED $<$<BOOL:${QVR_FUZZ}>:-fsanitize=fuzzer-no-link>)

function(qvr_make_slot_targets)
    foreach(slot IN LISTS QVR_SLOTS)
        list(FIND QVR_SLOTS ${slot} index)
        add_library(slot_${slot} OBJECT)
        target_compile_options(slot_${slot} PRIVATE ${QVR_KERNEL_FLAGS} ${QVR_FLAGS_${slot}} ${QVR_OPTIMISE})
        target_compile_definitions(slot_${slot} PRIVATE QVR_SLOT_PREFIX=${slot} QVR_SLOT_INDEX=${index})
        target_include_directories(slot_${slot} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
        if(slot IN_LIST QVR_WATCHED_SLOTS)
            target_compile_options(slot_${slot} PRIVATE ${QVR_WATCHED})
        endif()
    endforeach()
    add_library(slot_plain OBJECT)
    target_compile_options(slot_plain PRIVATE ${QVR_OPTIMISE}
        $<$<COMPILE_LANGUAGE:CXX>:${QVR_COMMON_FLAGS} ${QVR_WATCHED} -fopenmp>)
    target_include_directories(slot_plain PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
endfunction()

# qvr_sources(ALL_SLOTS a.cpp ... SHARED_N8 b.cpp ... PLAIN c.cpp ... ONLY_<slot> d.cpp ...)
#   ALL_SLOTS  compiled seven times
#   SHARED_N8  compiled six times: slot n8 repeats the pointers of u8
#   PLAIN      compiled once, for the baseline
#   ONLY_l9    (any slot) a kernel file for that level alone
function(qvr_sources)
    set(lists ALL_SLOTS SHARED_N8 PLAIN)
    foreach(slot IN LISTS QVR_SLOTS)
        list(APPEND lists ONLY_${slot})
    endforeach()
    cmake_parse_arguments(A "" "" "${lists}" ${ARGN})
    foreach(slot IN LISTS QVR_SLOTS)
        set(files ${A_ALL_SLOTS} ${A_ONLY_${slot}})
        if(NOT slot STREQUAL "n8")
            list(APPEND files ${A_SHARED_N8})
        endif()
        list(TRANSFORM files PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
        target_sources(slot_${slot} PRIVATE ${files})
    endforeach()
    list(TRANSFORM A_PLAIN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    target_sources(slot_plain PRIVATE ${A_PLAIN})
endfunction()
