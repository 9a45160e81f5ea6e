# `cpack -G DEB` in a build folder of the preset "package" makes the Debian packages: the library, what is needed to
# build against it, the tools, and the package for Python.
if(NOT PROJECT_IS_TOP_LEVEL OR NOT BUILD_SHARED_LIBS OR NOT QM_ORDERING_BUILD_HOST)
  return()
endif()

set(DEBIAN_VERSION ${PROJECT_VERSION}-1)
set(LIBRARY_PACKAGE libqm-ordering${PROJECT_VERSION_MAJOR})
set(EXACT_LIBRARY "${LIBRARY_PACKAGE} (= ${DEBIAN_VERSION})")

set(CPACK_GENERATOR DEB)
set(CPACK_OUTPUT_FILE_PREFIX packages)
set(CPACK_PACKAGE_NAME qm-ordering)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGE_CONTACT "QM_Ordering developers <dev@example.org>")
set(CPACK_STRIP_FILES ON)
# The installation then sees the prefix that the packages have.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL library development tools)
if(QM_ORDERING_BUILD_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
# A program needs exactly the version that it was built for: before version 1 any other may differ.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)

# The description's first line, what the package holds.
function(qm_ordering_describe COMPONENT SECTION SUMMARY CONTENT)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_SECTION ${SECTION} PARENT_SCOPE)
  set(CPACK_DEBIAN_${COMPONENT}_DESCRIPTION
      "ordering data of a product catalogue - ${SUMMARY}
QM_Ordering keeps the ordering data of a desktop product catalogue for the
program that shows the catalogue: the one order that the user is building,
and the orders that were submitted, in one file that survives crashes.

${CONTENT}" PARENT_SCOPE)
endfunction()
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${LIBRARY_PACKAGE})
qm_ordering_describe(LIBRARY libs "shared library" "This package holds the shared library.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqm-ordering-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${EXACT_LIBRARY}")
qm_ordering_describe(
  DEVELOPMENT libdevel "development files"
  "This package holds the headers (C++20) and the files for CMake and pkg-config.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME qm-ordering)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${EXACT_LIBRARY}")
qm_ordering_describe(
  TOOLS utils "command-line program"
  "This package holds the program qm-ordering: it builds, checks and submits the
order, and makes, checks, backs up and restores the store.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-qm-ordering)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${EXACT_LIBRARY}, python3 (>= 3.11)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/python/postinst
                                              ${PROJECT_SOURCE_DIR}/cmake/debian/python/prerm)
qm_ordering_describe(
  PYTHON python "package for Python"
  "This package holds the package qm_ordering for hosts in Python.")

# What Debian wants beside each package; not part of `cmake --install`.
set(DOCUMENTS ${PROJECT_BINARY_DIR}/debian)
qm_ordering_gzip(${PROJECT_SOURCE_DIR}/cmake/debian/changelog ${DOCUMENTS}/changelog.Debian.gz)
qm_ordering_gzip(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${DOCUMENTS}/changelog.gz)
add_custom_target(debian_documents ALL DEPENDS ${DOCUMENTS}/changelog.Debian.gz ${DOCUMENTS}/changelog.gz)
foreach(COMPONENT IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${COMPONENT} NAME)
  install(FILES cmake/debian/copyright ${DOCUMENTS}/changelog.Debian.gz ${DOCUMENTS}/changelog.gz
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${NAME}_PACKAGE_NAME} COMPONENT ${COMPONENT}
          EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
