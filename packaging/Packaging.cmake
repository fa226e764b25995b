# SPDX-License-Identifier: MIT
# `cmake --install` and CPack. On a Mac: Kestrune.app with Qt inside it, signed with the hardened runtime,
# in a drag-to-Applications disk image. Elsewhere: bin/, the desktop entry and the icon under share/.
include(GNUInstallDirs)

set(CPACK_PACKAGE_NAME Kestrune)
set(CPACK_PACKAGE_VENDOR "The Kestrune developers")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Removes Mac apps and every file they left behind")
set(CPACK_PACKAGE_FILE_NAME "Kestrune-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}")

if(APPLE)
    if(TARGET kestrune)
        install(TARGETS kestrune BUNDLE DESTINATION .)
        install(TARGETS kestrune-cli RUNTIME DESTINATION Kestrune.app/Contents/MacOS)
        find_program(MACDEPLOYQT macdeployqt HINTS "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_BINS}" REQUIRED)
        set(KESTRUNE_QML_DIR "${CMAKE_SOURCE_DIR}/src/ui/qml")
        set(KESTRUNE_ENTITLEMENTS "${CMAKE_SOURCE_DIR}/packaging/macos/Kestrune.entitlements")
        configure_file(${CMAKE_CURRENT_LIST_DIR}/macos/deploy.cmake.in ${CMAKE_BINARY_DIR}/deploy-macos.cmake @ONLY)
        install(SCRIPT ${CMAKE_BINARY_DIR}/deploy-macos.cmake)
    else()
        install(TARGETS kestrune-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    endif()
    set(CPACK_GENERATOR DragNDrop)
    set(CPACK_DMG_VOLUME_NAME Kestrune)
    set(CPACK_DMG_FORMAT UDZO)
    # The disk image shows the app beside a link to /Applications.
    set(CPACK_DMG_DISABLE_APPLICATIONS_SYMLINK OFF)
else()
    install(TARGETS kestrune-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    if(TARGET kestrune)
        install(TARGETS kestrune RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
        install(FILES ${CMAKE_CURRENT_LIST_DIR}/linux/com.kestrune.Kestrune.desktop
                DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
        install(FILES ${KESTRUNE_APP_ICON_PNG} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/512x512/apps
                RENAME com.kestrune.Kestrune.png)
        install(FILES ${CMAKE_SOURCE_DIR}/src/ui/icon/AppIcon.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
                RENAME com.kestrune.Kestrune.svg)
    endif()
    install(FILES ${CMAKE_SOURCE_DIR}/src/resources/fonts/LICENSE-MaterialIcons.txt
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kestrune)
    set(CPACK_GENERATOR TGZ)
endif()
include(CPack)
