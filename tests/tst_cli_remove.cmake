# SPDX-License-Identifier: MIT
# The remove command is tested in-process, with stand-ins for the TARGET and group look-ups.
target_sources(tst_cli_remove PRIVATE ${CMAKE_SOURCE_DIR}/src/cli/RemoveCommand.cpp ${CMAKE_SOURCE_DIR}/src/cli/CliSupport.cpp)
