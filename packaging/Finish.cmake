# Run by cpack for the packages as they lie in their places, before they are put together: adds to each what Debian wants
# in every package, compresses the manual pages, and gives what is of one architecture alone the folder of that one.

# Moments in packages come from SOURCE_DATE_EPOCH where it is set, so that the same files make the same packages.
set(ENV{LC_ALL} C)
string(TIMESTAMP TALLYBOOK_PACKAGED "%a, %d %b %Y %H:%M:%S +0000" UTC)

function(compress file)
  execute_process(COMMAND gzip -9 --no-name --force ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(READ ${CPACK_TALLYBOOK_PACKAGING}/copyright own_copyright)

# The terms of the libraries whose headers are compiled into the command; those that are linked bring theirs with them.
file(READ ${CPACK_TALLYBOOK_PACKAGING}/headers header_copyright)
foreach(package libcli11-dev libfmt-dev nlohmann-json3-dev)
  file(READ /usr/share/doc/${package}/copyright terms)
  string(APPEND header_copyright "\n${package}\n\n${terms}")
endforeach()
set(desktop_copyright "${header_copyright}")
if(EXISTS /usr/share/doc/qt6-base-dev/copyright)
  file(READ /usr/share/doc/qt6-base-dev/copyright terms)
  string(APPEND desktop_copyright "\nqt6-base-dev\n\n${terms}")
endif()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} key)
  set(name ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX})
  set(documents ${root}/share/doc/${name})
  file(MAKE_DIRECTORY ${documents})

  set(copyright "${own_copyright}")
  if(component STREQUAL Runtime)
    string(APPEND copyright "${header_copyright}")
  elseif(component STREQUAL Desktop)
    string(APPEND copyright "${desktop_copyright}")
  endif()
  file(WRITE ${documents}/copyright "${copyright}")
  configure_file(${CPACK_TALLYBOOK_PACKAGING}/changelog.in ${documents}/changelog @ONLY)
  compress(${documents}/changelog)
  file(CHMOD ${documents}/copyright ${documents}/changelog.gz PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

  if(CPACK_TALLYBOOK_ARCHITECTURE)
    foreach(folder tallybook pkgconfig)
      if(EXISTS ${root}/lib/${folder})
        file(MAKE_DIRECTORY ${root}/lib/${CPACK_TALLYBOOK_ARCHITECTURE})
        file(RENAME ${root}/lib/${folder} ${root}/lib/${CPACK_TALLYBOOK_ARCHITECTURE}/${folder})
      endif()
    endforeach()
    # It finds the rest from its own place, which is one folder deeper now; the static libraries stay where they were.
    set(pkgconfig ${root}/lib/${CPACK_TALLYBOOK_ARCHITECTURE}/pkgconfig/tallybook.pc)
    if(EXISTS ${pkgconfig})
      file(READ ${pkgconfig} text)
      string(REPLACE "\${pcfiledir}/" "\${pcfiledir}/../" text "${text}")
      file(WRITE ${pkgconfig} "${text}")
    endif()
  endif()

  file(GLOB pages ${root}/share/man/man*/*.[1-9])
  foreach(page IN LISTS pages)
    compress(${page})
  endforeach()
endforeach()
