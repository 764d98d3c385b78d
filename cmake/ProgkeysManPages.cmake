# progkeys_man_pages(<component> <page>.<section>.scd ...): builds and installs manual pages.
include(GNUInstallDirs)
find_program(PROGKEYS_SCDOC scdoc REQUIRED DOC "Makes manual pages; Debian's package scdoc")

function(progkeys_man_pages component)
  foreach(source ${ARGN})
    get_filename_component(page ${source} NAME_WLE)
    string(REGEX REPLACE "^.*\\." "man" section ${page})
    set(directory ${CMAKE_BINARY_DIR}/share/man/${section})
    file(MAKE_DIRECTORY ${directory})
    configure_file(${source} ${page}.scd @ONLY)
    add_custom_command(OUTPUT ${directory}/${page}
      COMMAND sh -c "\"$0\" <\"$1\" >\"$2\"" ${PROGKEYS_SCDOC}
              ${CMAKE_CURRENT_BINARY_DIR}/${page}.scd ${directory}/${page}
      DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/${page}.scd VERBATIM)
    list(APPEND pages ${directory}/${page})
    install(FILES ${directory}/${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/${section}
            COMPONENT ${component})
  endforeach()
  add_custom_target(progkeys_man_${component} ALL DEPENDS ${pages})
endfunction()
