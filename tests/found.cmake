# SPDX-License-Identifier: MIT
# These tests run the built command line (directly, or as an unprivileged user through setpriv).
foreach(test_target IN ITEMS tst_cli_apps tst_cli_reference tst_cli_restore tst_filesizecalculator tst_leftoverscanner_cli tst_orphansample tst_updatecheck)
    add_dependencies(${test_target} kestrune-cli)
endforeach()
