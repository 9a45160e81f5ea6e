# The target docs: the reference of the public classes, as HTML in docs/html of the build folder.
find_program(DOXYGEN_PROGRAM doxygen)
if(DOXYGEN_PROGRAM AND PROJECT_IS_TOP_LEVEL)
  set(DOXYGEN_HEADERS ${QM_ORDERING_PUBLIC_HEADERS} ${QM_ORDERING_C_HEADER})
  list(TRANSFORM DOXYGEN_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/)
  list(JOIN DOXYGEN_HEADERS " \\\n    " DOXYGEN_HEADERS)
  configure_file(docs/Doxyfile.in docs/Doxyfile @ONLY)
  add_custom_target(docs COMMAND ${DOXYGEN_PROGRAM} ${PROJECT_BINARY_DIR}/docs/Doxyfile VERBATIM)
endif()
