# What find_package(PictureTQX) finds: headers, the desk host as libraries, and where all of it lies.
include(CMakePackageConfigHelpers)
set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/PictureTQX)

install(TARGETS sdk EXPORT PictureTQX)
install(TARGETS platform tqxhost tqxscript EXPORT PictureTQXHost
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
set_target_properties(tqxhost PROPERTIES EXPORT_NAME host)
set_target_properties(tqxscript PROPERTIES EXPORT_NAME script)
foreach(room sdk platform host)
  install(DIRECTORY ${room} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/picturetqx COMPONENT development
          FILES_MATCHING PATTERN "*.h" PATTERN checks EXCLUDE)
endforeach()

foreach(targets PictureTQX PictureTQXHost)
  install(EXPORT ${targets} FILE ${targets}Targets.cmake NAMESPACE PictureTQX:: DESTINATION ${folder}
          COMPONENT development)
endforeach()
configure_package_config_file(cmake/PictureTQXConfig.cmake.in ${CMAKE_BINARY_DIR}/PictureTQXConfig.cmake
                              INSTALL_DESTINATION ${folder})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/PictureTQXConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/PictureTQXConfig.cmake ${CMAKE_BINARY_DIR}/PictureTQXConfigVersion.cmake
              cmake/HostLibraries.cmake
        DESTINATION ${folder} COMPONENT development)
