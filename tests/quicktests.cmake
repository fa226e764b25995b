# SPDX-License-Identifier: MIT
# The window's views under Qt Quick Test, one tst_*.qml per view, on the offscreen platform.
if(KESTRUNE_BUILD_UI)
    add_executable(tst_quick quick/main.cpp quick/QuickHarness.h quick/QuickHarness.cpp)
    target_link_libraries(tst_quick PRIVATE kestrune-test-support kestrune-qml kestrune-qmlplugin Qt6::QuickTest)
    target_compile_definitions(tst_quick PRIVATE QUICK_TEST_SOURCE_DIR="${CMAKE_CURRENT_SOURCE_DIR}/quick")
    add_test(NAME tst_quick COMMAND tst_quick -input ${CMAKE_CURRENT_SOURCE_DIR}/quick)
    set_tests_properties(tst_quick PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" TIMEOUT 300)
endif()
