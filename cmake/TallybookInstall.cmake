# What `cmake --install` gives: the component's headers, its static libraries, a CMake package and a pkg-config file;
# with the application, the command `tallybook` and the documents as well, and where it is built the desktop application
# with what makes it known to the system. Install components: Development, Runtime, Desktop and Documentation.
#
#   find_package(Tallybook REQUIRED)
#   target_link_libraries(program PRIVATE Tallybook::exchange)
#
#   g++ -std=c++20 $(pkg-config --cflags tallybook) program.cpp $(pkg-config --libs tallybook)

include(CMakePackageConfigHelpers)

# The floors that are libraries, each above what it links. The linker is told them in the opposite order.
set(TALLYBOOK_FLOORS base platform host support qdx import exchange forms reportdialog dialogs views)
set(TALLYBOOK_PACKAGE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/Tallybook)

set(TALLYBOOK_PKGCONFIG_LIBRARIES)
foreach(floor IN LISTS TALLYBOOK_FLOORS)
  # The same name inside this build and in an installed package.
  add_library(Tallybook::${floor} ALIAS tallybook_${floor})
  set_target_properties(tallybook_${floor} PROPERTIES EXPORT_NAME ${floor})
  install(TARGETS tallybook_${floor} EXPORT TallybookTargets
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/${floor}
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tallybook COMPONENT Development
          FILES_MATCHING PATTERN "*.h")
  get_target_property(kind tallybook_${floor} TYPE)
  if(kind STREQUAL "STATIC_LIBRARY")
    string(PREPEND TALLYBOOK_PKGCONFIG_LIBRARIES " -ltallybook_${floor}")
  endif()
endforeach()

install(EXPORT TallybookTargets NAMESPACE Tallybook:: DESTINATION ${TALLYBOOK_PACKAGE_FOLDER} COMPONENT Development)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/TallybookConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/package/TallybookConfig.cmake
                              INSTALL_DESTINATION ${TALLYBOOK_PACKAGE_FOLDER})
# Before 1.0 a new minor version may change what embedders wrote against.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/TallybookConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/package/TallybookConfig.cmake
              ${PROJECT_BINARY_DIR}/package/TallybookConfigVersion.cmake
        DESTINATION ${TALLYBOOK_PACKAGE_FOLDER} COMPONENT Development)

# The .pc file finds the rest from its own place, so that an installed tree can be moved.
file(RELATIVE_PATH TALLYBOOK_PREFIX_FROM_PKGCONFIG
     ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" TALLYBOOK_PREFIX_FROM_PKGCONFIG ${TALLYBOOK_PREFIX_FROM_PKGCONFIG})
configure_file(${CMAKE_CURRENT_LIST_DIR}/tallybook.pc.in ${PROJECT_BINARY_DIR}/package/tallybook.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/tallybook.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)

if(TALLYBOOK_BUILD_APPLICATION)
  # The command finds its modules from its own place too.
  set(TALLYBOOK_MODULE_FOLDER ${CMAKE_INSTALL_LIBDIR}/tallybook)
  file(RELATIVE_PATH TALLYBOOK_MODULES_FROM_COMMAND
       ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_PREFIX}/${TALLYBOOK_MODULE_FOLDER})
  set(TALLYBOOK_MODULE_PATHS $ORIGIN/${TALLYBOOK_MODULES_FROM_COMMAND})
  if(CMAKE_LIBRARY_ARCHITECTURE)
    # where the Debian packages have them
    list(APPEND TALLYBOOK_MODULE_PATHS $ORIGIN/../lib/${CMAKE_LIBRARY_ARCHITECTURE}/tallybook)
  endif()
  set_target_properties(tallybook PROPERTIES INSTALL_RPATH "${TALLYBOOK_MODULE_PATHS}")
  install(TARGETS tallybook RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime)
  install(TARGETS tallybook_pdf tallybook_xlsx LIBRARY DESTINATION ${TALLYBOOK_MODULE_FOLDER} COMPONENT Runtime)

  if(TARGET tallybook-desktop)
    set(desktop ${PROJECT_SOURCE_DIR}/packaging/desktop)
    set_target_properties(tallybook-desktop PROPERTIES INSTALL_RPATH "${TALLYBOOK_MODULE_PATHS}")
    install(TARGETS tallybook-desktop RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Desktop)
    install(FILES ${desktop}/tallybook-desktop.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT Desktop)
    install(FILES ${desktop}/tallybook.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages COMPONENT Desktop)
    set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
    install(FILES ${desktop}/tallybook-desktop.svg DESTINATION ${icons}/scalable/apps COMPONENT Desktop)
    foreach(size 16 24 32 48 64 128 256)
      install(FILES ${desktop}/icons/${size}.png DESTINATION ${icons}/${size}x${size}/apps
              RENAME tallybook-desktop.png COMPONENT Desktop)
    endforeach()
    string(TIMESTAMP TALLYBOOK_RELEASE_DATE %Y-%m-%d UTC)
    set(id example.tallybook.Tallybook)
    configure_file(${desktop}/${id}.metainfo.xml.in ${PROJECT_BINARY_DIR}/package/${id}.metainfo.xml @ONLY)
    configure_file(${desktop}/tallybook-desktop.1.in ${PROJECT_BINARY_DIR}/package/tallybook-desktop.1 @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/package/${id}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo
            COMPONENT Desktop)
    install(FILES ${PROJECT_BINARY_DIR}/package/tallybook-desktop.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
            COMPONENT Desktop)
  endif()

  # The documents point to each other as they do in the project's folder.
  set(TALLYBOOK_DOCUMENT_FOLDER ${CMAKE_INSTALL_DATAROOTDIR}/doc/tallybook)
  install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/ARCHITECTURE.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
          DESTINATION ${TALLYBOOK_DOCUMENT_FOLDER} COMPONENT Documentation)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples
          DESTINATION ${TALLYBOOK_DOCUMENT_FOLDER} COMPONENT Documentation)

  # Everything that is installed, and nothing that only tests or benchmarks need.
  add_custom_target(installed)
  add_dependencies(installed tallybook tallybook_pdf tallybook_xlsx)
  if(TARGET tallybook-desktop)
    add_dependencies(installed tallybook-desktop)
  endif()
  if(TARGET tallybook_man_and_completion)
    add_dependencies(installed tallybook_man_and_completion)
  endif()
  foreach(floor IN LISTS TALLYBOOK_FLOORS)
    add_dependencies(installed tallybook_${floor})
  endforeach()
endif()
