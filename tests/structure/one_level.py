"""A kernel for one level, as CONTRIBUTING tells: one_level.py SOURCE-FOLDER C-COMPILER C++-COMPILER WORK-FOLDER

A small project on the library's own frame has a function in one file for all slots and in a second one for l9: it links,
and the tables would reach the second one from l9 alone. A row of numbers by slot that is a value short does not compile.
"""
import pathlib
import shutil
import subprocess
import sys

import binary

FILES = {
    "CMakeLists.txt": """
cmake_minimum_required(VERSION 3.25)
project(one_level LANGUAGES C CXX)
set(CMAKE_CXX_STANDARD 20)
include(cmake/declarations.cmake)
include(cmake/slots.cmake)
qvr_make_slot_targets()
add_subdirectory(sums)
add_executable(show)
foreach(slot IN LISTS QVR_SLOTS ITEMS plain)
    target_link_libraries(show PRIVATE slot_${slot})
endforeach()
foreach(rows whole short)
    add_library(${rows} OBJECT EXCLUDE_FROM_ALL ${rows}.cpp)
    target_link_libraries(${rows} PRIVATE declarations)
    target_compile_options(${rows} PRIVATE $<TARGET_PROPERTY:slot_mx,COMPILE_OPTIONS>)
    target_compile_definitions(${rows} PRIVATE $<TARGET_PROPERTY:slot_mx,COMPILE_DEFINITIONS>)
endforeach()
""",
    "whole.cpp": '#include "frame/slot.h"\nextern const int kWhole = PerSlot<int>{1, 2, 3, 4, 5, 6, 7}.here();\n',
    "short.cpp": '#include "frame/slot.h"\nextern const int kShort = PerSlot<int>{1, 2, 3, 4, 5, 6}.here();\n',
    "sums/CMakeLists.txt": "qvr_sources(SHARED level.cpp ALL_SLOTS other.cpp ONLY_l9 level_l9.cpp PLAIN show.cpp)\n",
    "sums/level.cpp": '#include "frame/slot.h"\nextern "C" int SLOT(level)(void) { return kSlot; }\n',
    "sums/level_l9.cpp": '#include "frame/slot.h"\nextern "C" int SLOT(level)(void) { return 100 + kSlot; }\n',
    "sums/other.cpp": '#include "frame/slot.h"\nextern "C" int SLOT_SHARED(level)(void);\n'
                      'extern "C" int SLOT(other)(void) { return SLOT_SHARED(level)(); }\n',
    "sums/show.cpp": """
#include <stdio.h>
#define QVR_SLOT(prefix, ...) extern "C" int prefix##_other(void);
#include "frame/slots.def"
int main()
{
#define QVR_SLOT(prefix, ...) printf("%d ", prefix##_other());
#include "frame/slots.def"
}
""",
}


def main(source, cc, cxx, work):
    work = pathlib.Path(work)
    shutil.rmtree(work, ignore_errors=True)
    for name, text in FILES.items():
        path = work / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
    for folder in ("cmake", "frame", "scripts", "include", "vector", "elementary", "fourier", "filters", "image"):
        (work / folder).symlink_to(pathlib.Path(source) / folder)
    for command in (["cmake", "-S", work, "-B", work / "build", "-G", "Ninja", f"-DCMAKE_C_COMPILER={cc}", f"-DCMAKE_CXX_COMPILER={cxx}",
                     "-DCMAKE_BUILD_TYPE=Release"], ["cmake", "--build", work / "build", "--target", "show"]):
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    text = binary.run(work / "build/show")
    failures = [] if text.split() == ["0", "1", "2", "2", "4", "5", "106"] else [f"the slots are reached as {text}"]
    for rows, compiles in (("whole", True), ("short", False)):
        done = subprocess.run(["cmake", "--build", work / "build", "--target", rows], capture_output=True, text=True)
        if (done.returncode == 0) != compiles or not compiles and "missing field" not in done.stdout:
            failures.append(f"a {rows} row of numbers by slot: {done.stdout}")
    binary.finish("one level", failures)


if __name__ == "__main__":
    main(*sys.argv[1:])
