# The target `emulated` runs this script; see ProgkeysEmulator.cmake. It creates hard links, because the
# emulator resolves symbolic links in the path that it passes to a program.
file(STRINGS ${BINARY_DIR}/emulated/programs programs)
foreach(program ${programs})
  file(RELATIVE_PATH name ${BINARY_DIR} ${program})
  get_filename_component(directory ${BINARY_DIR}/emulated/${name} DIRECTORY)
  file(MAKE_DIRECTORY ${directory})
  file(CREATE_LINK ${program} ${BINARY_DIR}/emulated/${name}.target COPY_ON_ERROR)
  file(CREATE_LINK ${BINARY_DIR}/emulated/run ${BINARY_DIR}/emulated/${name} SYMBOLIC)
endforeach()
