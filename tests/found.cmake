# SPDX-License-Identifier: MIT
# These tests run the built command line (directly, or as an unprivileged user through setpriv).
foreach(test_target IN ITEMS tst_cli_apps tst_cli_reference tst_filesizecalculator tst_updatecheck)
    add_dependencies(${test_target} kestrune-cli)
endforeach()
