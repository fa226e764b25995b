# SPDX-License-Identifier: MIT
# These tests run the built command line (directly, or as an unprivileged user through setpriv).
add_dependencies(tst_cli_apps kestrune-cli)
add_dependencies(tst_filesizecalculator kestrune-cli)
