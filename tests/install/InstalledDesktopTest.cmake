# Installs the desktop application into an empty prefix and has the system's own programs look at what makes it known:
# its entry for menus, its data for software centres, its types of files, its icons, its man page.
#   cmake -D BUILD=... -D WORK=... (see CMakeLists.txt) -P InstalledDesktopTest.cmake

include(${CMAKE_CURRENT_LIST_DIR}/Steps.cmake)

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK} --component Desktop)
set(data ${WORK}/${DATADIR})
foreach(wanted ${WORK}/${BINDIR}/tallybook-desktop ${WORK}/${MANDIR}/man1/tallybook-desktop.1
               ${data}/icons/hicolor/scalable/apps/tallybook-desktop.svg)
  if(NOT EXISTS ${wanted})
    message(FATAL_ERROR "the installation lacks ${wanted}")
  endif()
endforeach()

run(desktop-file-validate ${data}/applications/tallybook-desktop.desktop)
expect(output "")
run(appstreamcli validate --no-net --no-color ${data}/metainfo/example.tallybook.Tallybook.metainfo.xml)
run(mandoc -T lint -W warning ${WORK}/${MANDIR}/man1/tallybook-desktop.1)
expect(output "")

# The types of files are known by their names and, whatever they are called, by their first bytes.
run(update-mime-database ${data}/mime)
file(STRINGS ${data}/mime/globs2 globs REGEX "tallybook")
foreach(glob "60:application/vnd.tallybook.book:*.tbk" "60:application/vnd.tallybook.exchange:*.qdx")
  if(NOT glob IN_LIST globs)
    message(FATAL_ERROR "no type is known as ${glob}: ${globs}")
  endif()
endforeach()

# Every size of the icon is the size that its folder says: a PNG tells its width in the bytes from 16 on.
foreach(size 16 24 32 48 64 128 256)
  file(READ ${data}/icons/hicolor/${size}x${size}/apps/tallybook-desktop.png width OFFSET 16 LIMIT 4 HEX)
  math(EXPR width "0x${width}")
  if(NOT width EQUAL size)
    message(FATAL_ERROR "the icon of ${size} is ${width} wide")
  endif()
endforeach()
