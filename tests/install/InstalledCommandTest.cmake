# Installs the command into an empty prefix, moves that tree elsewhere, and has it make a PDF report and a workbook: the
# modules for these are found from the command's own place. Without the modules it says so, and nothing is begun.
#   cmake -D BUILD=... -D WORK=... (see CMakeLists.txt) -P InstalledCommandTest.cmake

include(${CMAKE_CURRENT_LIST_DIR}/Steps.cmake)

# The font library's leaks are not ours; only builds with the address sanitizer look at this.
set(ENV{LSAN_OPTIONS} suppressions=${LEAKS}:print_suppressions=0)

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/first --component Runtime)
file(RENAME ${WORK}/first ${WORK}/moved)
set(tallybook ${WORK}/moved/${BINDIR}/tallybook)
run(${tallybook} demo ${WORK}/demo)
set(import ${tallybook} import qdx ${WORK}/demo/head-office --definition 1 --yes --report)

run(${import} ${WORK}/demo/report.pdf)
file(READ ${WORK}/demo/report.pdf signature LIMIT 5)
expect(signature "%PDF-")
run(${tallybook} export table ${WORK}/demo/head-office ${WORK}/demo/book.xlsx --type xlsx
    --from 2023-01-01 --to 2026-12-31)
file(READ ${WORK}/demo/book.xlsx signature LIMIT 2)
expect(signature "PK")

file(REMOVE_RECURSE ${WORK}/moved/${LIBDIR}/tallybook)
execute_process(COMMAND ${import} ${WORK}/demo/other.pdf RESULT_VARIABLE status OUTPUT_VARIABLE printed ERROR_VARIABLE told)
if(NOT status EQUAL 1 OR NOT printed STREQUAL "" OR NOT told MATCHES "^tallybook: Reports cannot be made as PDF: ")
  message(FATAL_ERROR "without the module: status ${status}, printed '${printed}', told '${told}'")
endif()
if(EXISTS ${WORK}/demo/other.pdf)
  message(FATAL_ERROR "without the module a report was begun")
endif()
execute_process(COMMAND ${tallybook} export table ${WORK}/demo/head-office ${WORK}/demo/other.xlsx --type xlsx
                --from 2023-01-01 --to 2026-12-31
                RESULT_VARIABLE status OUTPUT_VARIABLE printed ERROR_VARIABLE told)
if(NOT status EQUAL 1 OR NOT told MATCHES "Workbooks cannot be written: ")
  message(FATAL_ERROR "without the module: status ${status}, printed '${printed}', told '${told}'")
endif()
if(EXISTS ${WORK}/demo/other.xlsx)
  message(FATAL_ERROR "without the module a workbook was begun")
endif()

# The man pages and the completions lie where man and the shells look for them.
foreach(page ${MANDIR}/man1/tallybook.1 ${MANDIR}/man1/tallybook-import-qdx.1
             ${DATADIR}/bash-completion/completions/tallybook ${DATADIR}/zsh/vendor-completions/_tallybook
             ${DATADIR}/fish/vendor_completions.d/tallybook.fish)
  if(NOT EXISTS ${WORK}/moved/${page})
    message(FATAL_ERROR "the installation lacks ${page}")
  endif()
endforeach()
