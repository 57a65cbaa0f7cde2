# The GTK 3 file managers' modules, each built where its library's development files are
# found, installed in that file manager's module folder as its own package component.
set(GTK3_MODULES "")

# gtk3_module(NAME PKG DIR_VARIABLE FILE_PREFIX SOURCE [DEFINITION])
function(gtk3_module name pkg dir_variable file_prefix source)
    pkg_check_modules(${name}_EXT IMPORTED_TARGET ${pkg})
    if(NOT ${name}_EXT_FOUND)
        message(STATUS "${pkg} not found: the ${name} module is not built")
        return()
    endif()
    pkg_get_variable(extension_dir ${pkg} ${dir_variable})
    pkg_get_variable(lib_dir ${pkg} libdir)
    file(RELATIVE_PATH subdir ${lib_dir} ${extension_dir})
    add_library(${name}-veskor MODULE ${source} description_page.cpp)
    set_target_properties(${name}-veskor PROPERTIES PREFIX "${file_prefix}"
                          OUTPUT_NAME ${name}-veskor CXX_VISIBILITY_PRESET hidden
                          VISIBILITY_INLINES_HIDDEN ON)
    target_link_libraries(${name}-veskor PRIVATE filemanager_glib PkgConfig::${name}_EXT
                          veskor_warnings)
    target_link_options(${name}-veskor PRIVATE LINKER:--no-undefined LINKER:--exclude-libs,ALL)
    if(ARGN)
        target_compile_definitions(${name}-veskor PRIVATE ${ARGN})
    endif()
    install(TARGETS ${name}-veskor LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${subdir}
            COMPONENT ${name} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    string(TOUPPER ${name} upper)
    file(RELATIVE_PATH bin_to_module ${CMAKE_INSTALL_FULL_BINDIR}
         ${CMAKE_INSTALL_FULL_LIBDIR}/${subdir}/${file_prefix}${name}-veskor.so)
    set(VESKOR_BIN_TO_${upper}_MODULE ${bin_to_module} PARENT_SCOPE)
    set(GTK3_MODULES ${GTK3_MODULES} ${name} PARENT_SCOPE)
endfunction()

gtk3_module(caja libcaja-extension extensiondir lib caja_nemo_module.cpp VESKOR_FOR_CAJA)
gtk3_module(nemo libnemo-extension extensiondir lib caja_nemo_module.cpp VESKOR_FOR_NEMO)
gtk3_module(thunar thunarx-3 extensionsdir "" thunar_module.cpp)

# The Options buttons look for the modules relative to the program's folder.
foreach(name CAJA NEMO THUNAR)
    target_compile_definitions(libcore PRIVATE
        VESKOR_BIN_TO_${name}_MODULE="${VESKOR_BIN_TO_${name}_MODULE}")
endforeach()

# Each module loaded as its file manager loads it, driven on a private X display (GTK 3
# makes no widget without one).
list(LENGTH GTK3_MODULES built)
if(built EQUAL 3)
    add_executable(gtk3_module_tests gtk3_module_test.cpp gtk3_module_host.cpp
                   gtk3_test_file_info.cpp ${CMAKE_SOURCE_DIR}/tests/temp_dir.cpp
                   ${CMAKE_SOURCE_DIR}/tests/store_samples.cpp)
    target_include_directories(gtk3_module_tests PRIVATE ${CMAKE_SOURCE_DIR})
    target_link_libraries(gtk3_module_tests PRIVATE libcli PkgConfig::caja_EXT
                          PkgConfig::nemo_EXT PkgConfig::thunar_EXT GTest::gtest veskor_warnings)
    pkg_check_modules(GMODULE REQUIRED IMPORTED_TARGET gmodule-2.0)
    target_link_libraries(gtk3_module_tests PRIVATE PkgConfig::GMODULE)
    target_compile_definitions(gtk3_module_tests PRIVATE
        VESKOR_CAJA_MODULE="$<TARGET_FILE:caja-veskor>"
        VESKOR_NEMO_MODULE="$<TARGET_FILE:nemo-veskor>"
        VESKOR_THUNAR_MODULE="$<TARGET_FILE:thunar-veskor>")
    add_dependencies(gtk3_module_tests caja-veskor nemo-veskor thunar-veskor)
    set_target_properties(gtk3_module_tests PROPERTIES
                          CROSSCOMPILING_EMULATOR "xvfb-run;--auto-servernum")
    gtest_discover_tests(gtk3_module_tests DISCOVERY_TIMEOUT 60)
endif()
