# The Debian packages that `cpack` makes of what is installed, one a component:
#
#   tallybook         Runtime        the command, the module that makes its PDF reports, its pages and completions
#   tallybook-desktop Desktop        the application with windows, where Qt is found
#   libtallybook-dev  Development    headers, static libraries, the CMake package and the pkg-config file
#   tallybook-doc     Documentation  the documents of docs/, with examples
#
# scripts/package builds what they hold and runs cpack and lintian. What only a package has (its copyright file and its
# changelog) and what a package has in another form (compressed pages) is done by packaging/Finish.cmake when the files
# lie in their places.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tallybook)
set(CPACK_PACKAGE_VENDOR "Tallybook Data Exchange")
set(CPACK_PACKAGE_CONTACT "Tallybook Data Exchange maintainers <maintainers@tallybook.example>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own, the first line of its description
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/Finish.cmake)
set(CPACK_TALLYBOOK_PACKAGING ${PROJECT_SOURCE_DIR}/packaging)
set(CPACK_TALLYBOOK_ARCHITECTURE ${CMAKE_LIBRARY_ARCHITECTURE})

set(CPACK_COMPONENTS_ALL Runtime Development Documentation)
if(TARGET tallybook-desktop)
  list(APPEND CPACK_COMPONENTS_ALL Desktop)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME tallybook)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS fonts-dejavu-core)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS tallybook-doc)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
"command that moves operating figures between books and files
A business keeps its operating figures per account, per datafield and per
date. This command keeps them in books and moves them: out of one book into
an exchange file or a spreadsheet, into another book through saved exchange
definitions that say which account and field goes where, and in from the text
files of other programs. Imports check everything before one figure changes,
and every import can be taken back.")

set(CPACK_DEBIAN_DESKTOP_PACKAGE_NAME tallybook-desktop)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_SHLIBDEPS ON)
# The module that makes PDF lies there.
set(CPACK_DEBIAN_DESKTOP_PACKAGE_DEPENDS "tallybook (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DESKTOP_PACKAGE_RECOMMENDS "fonts-dejavu-core, xdg-utils")
set(CPACK_DEBIAN_DESKTOP_PACKAGE_SUGGESTS tallybook-doc)
set(CPACK_DEBIAN_DESKTOP_DESCRIPTION
"application that keeps operating figures and exchanges them
A business keeps its operating figures per account, per datafield and per
date. This application keeps them in books and shows them as tables and
charts; it exports them to exchange files and spreadsheets, and imports them
through exchange definitions and from the text files of other programs. Every
import can be taken back, and everything can be done with the keyboard.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtallybook-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS g++)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "cmake, pkg-config, tallybook-doc")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"component that moves operating figures (development files)
Headers, static libraries, a CMake package and a pkg-config file of the
component with which an application exchanges the operating figures of its
own database through exchange files, spreadsheets and text files.")

set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME tallybook-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SUGGESTS "tallybook, libtallybook-dev")
set(CPACK_DEBIAN_DOCUMENTATION_DESCRIPTION
"command and component that move operating figures (documentation)
What every command of tallybook does, the exchange file byte by byte, the
text files that can be imported, what a book file holds, and examples.")

include(CPack)
