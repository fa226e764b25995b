# SPDX-License-Identifier: MIT
# The sample-Mac generator where the file system refuses names (APFS and names that are not UTF-8).
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_test(NAME tst_samplemac_refused_names
    COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/samplemac_refused_names.py ${KESTRUNE_SAMPLE_MAC_TOOL})
set_tests_properties(tst_samplemac_refused_names PROPERTIES TIMEOUT 120)
