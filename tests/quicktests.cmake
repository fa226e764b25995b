# SPDX-License-Identifier: MIT
# The window's views under Qt Quick Test, one tst_*.qml per view, on the offscreen platform: once with
# the platform's own palette, and once more under a dark desktop colour scheme given the way a desktop
# gives it, through the qt6ct platform theme, so the window meets a palette it did not choose.
if(KESTRUNE_BUILD_UI)
    add_executable(tst_quick quick/main.cpp)
    target_link_libraries(tst_quick PRIVATE kestrune-test-support kestrune-qml kestrune-qmlplugin Qt6::QuickTest)
    target_compile_definitions(tst_quick PRIVATE QUICK_TEST_SOURCE_DIR="${CMAKE_CURRENT_SOURCE_DIR}/quick")
    add_test(NAME tst_quick COMMAND tst_quick -input ${CMAKE_CURRENT_SOURCE_DIR}/quick)
    set_tests_properties(tst_quick PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" TIMEOUT 300)

    set(qt_plugins ${QT6_INSTALL_PREFIX}/${QT6_INSTALL_PLUGINS})
    set(dark_scheme /usr/share/qt6ct/colors/darker.conf)
    if(EXISTS ${qt_plugins}/platformthemes/libqt6ct.so AND EXISTS ${dark_scheme})
        set(dark_config ${CMAKE_CURRENT_BINARY_DIR}/dark-desktop)
        file(WRITE ${dark_config}/qt6ct/qt6ct.conf "[Appearance]\ncolor_scheme_path=${dark_scheme}\ncustom_palette=true\n")
        add_test(NAME tst_quick_dark COMMAND tst_quick -input ${CMAKE_CURRENT_SOURCE_DIR}/quick)
        set_tests_properties(tst_quick_dark PROPERTIES TIMEOUT 300 ENVIRONMENT
            "QT_QPA_PLATFORM=offscreen;QT_QPA_PLATFORMTHEME=qt6ct;XDG_CONFIG_HOME=${dark_config};KESTRUNE_EXPECT_DARK_SCHEME=1")
    else()
        message(STATUS "qt6ct is not installed: the Qt Quick tests run under the platform's palette only")
    endif()
endif()

# The symbols again, with fontconfig shown only DejaVu: no icon font is installed as far as Qt can tell.
if(KESTRUNE_BUILD_UI AND NOT APPLE)
    set(hidden_fonts_config ${CMAKE_CURRENT_BINARY_DIR}/fonts-without-icons.conf)
    file(WRITE ${hidden_fonts_config} "<?xml version=\"1.0\"?>\n<!DOCTYPE fontconfig SYSTEM \"fonts.dtd\">\n<fontconfig>\n"
        "  <dir>/usr/share/fonts/truetype/dejavu</dir>\n  <cachedir>${CMAKE_CURRENT_BINARY_DIR}/fontconfig-cache</cachedir>\n</fontconfig>\n")
    add_test(NAME tst_quick_iconfont COMMAND tst_quick -input ${CMAKE_CURRENT_SOURCE_DIR}/quick/tst_Symbol.qml)
    set_tests_properties(tst_quick_iconfont PROPERTIES
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;FONTCONFIG_FILE=${hidden_fonts_config}" TIMEOUT 120)
endif()
