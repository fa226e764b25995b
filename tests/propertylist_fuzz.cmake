# SPDX-License-Identifier: MIT
# The property-list reader under AddressSanitizer and UndefinedBehaviorSanitizer, built from only the
# sources it needs so that every ctest run fuzzes it without a second, sanitized build of everything.
add_executable(fuzz_propertylist
    ${CMAKE_CURRENT_SOURCE_DIR}/fuzz_propertylist.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/PlistBytes.h
    ${CMAKE_SOURCE_DIR}/src/platform/PropertyList.cpp
    ${CMAKE_SOURCE_DIR}/src/platform/FileSystem.cpp
    ${CMAKE_SOURCE_DIR}/src/platform/NativePath.cpp)
target_include_directories(fuzz_propertylist PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/src)
target_link_libraries(fuzz_propertylist PRIVATE Qt6::Core Qt6::Test PkgConfig::PLIST)
target_compile_options(fuzz_propertylist PRIVATE -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
target_link_options(fuzz_propertylist PRIVATE -fsanitize=address,undefined)
add_test(NAME fuzz_propertylist COMMAND fuzz_propertylist)
set_tests_properties(fuzz_propertylist PROPERTIES TIMEOUT 300
    ENVIRONMENT "ASAN_OPTIONS=abort_on_error=1:detect_leaks=1;UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1")
