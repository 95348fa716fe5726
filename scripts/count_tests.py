"""Counts tests from CTest's JUnit reports: count_tests.py REPORT ... prints "PASSED FAILED SKIPPED".

A report's test is one test, unless its output ends with a summary of GoogleTest or pytest: then each case in it counts (a whole
test program under a simulated processor is one CTest test). A test that CTest calls failed counts as failed at least once.
"""
import re
import sys
import xml.etree.ElementTree as ElementTree


def cases(output, pattern):
    return sum(int(number) for number in re.findall(pattern, output, re.M))


def count(path):
    passed = failed = skipped = 0
    for case in ElementTree.parse(path).getroot().iter("testcase"):
        status = case.get("status")
        output = case.findtext("system-out") or ""
        if status in ("disabled", "notrun") and case.find("failure") is None:
            skipped += 1
            continue
        good = cases(output, r"^\[  PASSED  \] (\d+) tests?\.") + cases(output, r"^(?:\d+ failed, )?(\d+) passed\b.* in [0-9.]+s")
        bad = cases(output, r"^\[  FAILED  \] (\d+) tests?, listed below") + cases(output, r"^(\d+) failed\b.* in [0-9.]+s")
        idle = cases(output, r"^\[  SKIPPED \] (\d+) tests?, listed below") + cases(output, r"(\d+) skipped\b.* in [0-9.]+s$")
        if status == "run":
            passed += good if good or idle else 1
            skipped += idle
        else:
            passed += good
            skipped += idle
            failed += max(bad, 1)
    return passed, failed, skipped


if __name__ == "__main__":
    print(*map(sum, zip((0, 0, 0), *map(count, sys.argv[1:]))))
