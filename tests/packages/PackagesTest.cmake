# Makes the packages, asks lintian about them, unpacks them all into an empty root, and walks through the demo and a PDF
# report with the command that lies there.
#   cmake -D BUILD=... -D WORK=... (see CMakeLists.txt) -P PackagesTest.cmake

cmake_policy(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/../install/Steps.cmake)

file(REMOVE_RECURSE ${WORK})
run(${CPACK} --config ${BUILD}/CPackConfig.cmake -B ${WORK}/packages)
set(names tallybook libtallybook-dev tallybook-doc)
if(DESKTOP)
  list(APPEND names tallybook-desktop)
endif()
foreach(name IN LISTS names)
  file(GLOB package ${WORK}/packages/${name}_${VERSION}_*.deb)
  list(LENGTH package count)
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "${count} packages are called ${name}")
  endif()
  list(APPEND packages ${package})
endforeach()

run(lintian --allow-root --fail-on error,warning ${packages})
expect(output "")

# The libraries that the command wants are those of this system, so no dependency is looked for in the empty root.
set(root ${WORK}/root)
file(MAKE_DIRECTORY ${root}/var/lib/dpkg/info ${root}/var/lib/dpkg/updates)
file(TOUCH ${root}/var/lib/dpkg/status ${root}/var/lib/dpkg/available)
run(dpkg --root=${root} --force-not-root --force-depends --log=${WORK}/dpkg.log --install ${packages})
file(GLOB_RECURSE unpacked RELATIVE ${root}/usr ${root}/usr/*)
foreach(wanted bin/tallybook share/man/man1/tallybook.1.gz ${LIBDIR}/tallybook/tallybook_pdf.so
        ${LIBDIR}/tallybook/tallybook_xlsx.so ${LIBDIR}/pkgconfig/tallybook.pc
        lib/cmake/Tallybook/TallybookConfig.cmake include/tallybook/exchange/CDataExchange.h
        share/doc/tallybook/docs/command-line.md share/doc/tallybook/copyright share/doc/tallybook-doc/changelog.gz)
  if(NOT wanted IN_LIST unpacked)
    message(FATAL_ERROR "no package has ${wanted}")
  endif()
endforeach()

if(DESKTOP)
  foreach(wanted bin/tallybook-desktop share/man/man1/tallybook-desktop.1.gz share/applications/tallybook-desktop.desktop
          share/mime/packages/tallybook.xml share/icons/hicolor/scalable/apps/tallybook-desktop.svg
          share/metainfo/example.tallybook.Tallybook.metainfo.xml)
    if(NOT wanted IN_LIST unpacked)
      message(FATAL_ERROR "no package has ${wanted}")
    endif()
  endforeach()
endif()

# The development files are found from where they lie.
set(ENV{PKG_CONFIG_PATH} ${root}/usr/${LIBDIR}/pkgconfig)
run(${PKG_CONFIG} --variable=includedir tallybook)
string(STRIP "${output}" headers)
if(NOT EXISTS ${headers}/tallybook/exchange/CDataExchange.h)
  message(FATAL_ERROR "no headers in '${headers}'")
endif()

run(${root}/usr/bin/tallybook --version)
expect(output "tallybook ${VERSION}")
run(${root}/usr/bin/tallybook demo ${WORK}/demo)
run(${root}/usr/bin/tallybook import qdx ${WORK}/demo/head-office --definition 1 --yes --report ${WORK}/demo/report.pdf)
file(READ ${WORK}/demo/report.pdf signature LIMIT 5)
expect(signature "%PDF-")
