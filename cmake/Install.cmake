# What is installed where, and how another project finds it. The components are the parts of the Debian packages:
# library, development, tools, python.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(
  TARGETS qm_ordering
  EXPORT QM_Ordering
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  INCLUDES
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
foreach(HEADER IN LISTS QM_ORDERING_PUBLIC_HEADERS QM_ORDERING_C_HEADER)
  cmake_path(GET HEADER PARENT_PATH FOLDER)
  install(FILES ${HEADER} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${FOLDER} COMPONENT development)
endforeach()

# For CMake: find_package(QM_Ordering). Before version 1 the minor version is the one that may break a host.
set(CONFIG_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/QM_Ordering)
install(EXPORT QM_Ordering NAMESPACE QM_Ordering:: FILE QM_OrderingTargets.cmake DESTINATION ${CONFIG_FOLDER}
                                                                                COMPONENT development)
configure_package_config_file(cmake/QM_OrderingConfig.cmake.in ${PROJECT_BINARY_DIR}/QM_OrderingConfig.cmake
                              INSTALL_DESTINATION ${CONFIG_FOLDER})
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(COMPATIBILITY SameMinorVersion)
else()
  set(COMPATIBILITY SameMajorVersion)
endif()
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QM_OrderingConfigVersion.cmake COMPATIBILITY ${COMPATIBILITY})
install(FILES ${PROJECT_BINARY_DIR}/QM_OrderingConfig.cmake ${PROJECT_BINARY_DIR}/QM_OrderingConfigVersion.cmake
        DESTINATION ${CONFIG_FOLDER} COMPONENT development)

# For pkg-config. Only who links the static library needs the libraries behind it. The prefix is filled in by the
# installation, which may choose another one; a folder that does not depend on it stands as it is.
set(PC_PREFIX @CMAKE_INSTALL_PREFIX@)
foreach(FOLDER LIBDIR INCLUDEDIR)
  set(PC_${FOLDER} "\${prefix}")
  cmake_path(APPEND PC_${FOLDER} ${CMAKE_INSTALL_${FOLDER}})
endforeach()
if(NOT BUILD_SHARED_LIBS)
  string(REPLACE ">=" " >= " MODULES "${SQLITE_MODULE}, ${UTF8PROC_MODULE}, ${PUGIXML_MODULE}, ${SHAPELIB_MODULE}")
  set(PC_PRIVATE "Requires.private: ${MODULES}\nLibs.private: -lstdc++ -pthread\n")
endif()
set(PC_FILE ${PROJECT_BINARY_DIR}/qm_ordering.pc)
configure_file(cmake/qm_ordering.pc.in ${PC_FILE}.in @ONLY)
install(CODE "configure_file(\"${PC_FILE}.in\" \"${PC_FILE}\" @ONLY)" COMPONENT development)
install(FILES ${PC_FILE} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Compresses a document; the same text gives the same file.
function(qm_ordering_gzip SOURCE OUTPUT)
  add_custom_command(OUTPUT ${OUTPUT} COMMAND gzip -9nc ${SOURCE} > ${OUTPUT} DEPENDS ${SOURCE} VERBATIM)
endfunction()

if(QM_ORDERING_BUILD_HOST)
  install(TARGETS qm-ordering DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  if(NOT CMAKE_INSTALL_FULL_LIBDIR IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
    file(RELATIVE_PATH LIBRARY_FOLDER ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(qm-ordering PROPERTIES INSTALL_RPATH $ORIGIN/${LIBRARY_FOLDER})
  endif()
  install(FILES examples/catalogue.csv DESTINATION ${CMAKE_INSTALL_DATADIR}/qm-ordering COMPONENT tools)
  install(FILES host/qm-ordering.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
          RENAME qm-ordering COMPONENT tools)
  configure_file(host/qm-ordering.1.in qm-ordering.1 @ONLY)
  qm_ordering_gzip(${PROJECT_BINARY_DIR}/qm-ordering.1 ${PROJECT_BINARY_DIR}/qm-ordering.1.gz)
  add_custom_target(man_page ALL DEPENDS ${PROJECT_BINARY_DIR}/qm-ordering.1.gz)
  install(FILES ${PROJECT_BINARY_DIR}/qm-ordering.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()
