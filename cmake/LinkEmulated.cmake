# Run by the target `emulated`; see ProgkeysEmulator.cmake. It creates hard links, because the emulator
# resolves symbolic links before it tells a program its path.
file(STRINGS ${BINARY_DIR}/emulated/programs programs)
foreach(program ${programs})
  file(RELATIVE_PATH name ${BINARY_DIR} ${program})
  get_filename_component(directory ${BINARY_DIR}/emulated/${name} DIRECTORY)
  file(MAKE_DIRECTORY ${directory})
  file(CREATE_LINK ${program} ${BINARY_DIR}/emulated/${name}.target COPY_ON_ERROR)
  file(CREATE_LINK ${BINARY_DIR}/emulated/run ${BINARY_DIR}/emulated/${name} SYMBOLIC)
endforeach()
