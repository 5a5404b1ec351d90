# Packages of what is installed: three for Debian and an archive to unpack anywhere. tools/package.sh
# makes all of them.
option(TQX_DEBIAN "Install what Debian's packages must have: changelogs, and licences in their place" OFF)
set(TQX_MAINTAINER "The PictureTQX authors <maintainers@picturetqx.example>" CACHE STRING "Whom Debian's packages name")

set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME picturetqx)
set(CPACK_PACKAGE_CONTACT "${TQX_MAINTAINER}")
set(CPACK_PACKAGE_FILE_NAME picturetqx-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(ours "picturetqx (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_PICTURETQX_PACKAGE_NAME picturetqx)
set(CPACK_DEBIAN_PICTURETQX_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PICTURETQX_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PICTURETQX_PACKAGE_RECOMMENDS fonts-dejavu-core)
set(CPACK_DEBIAN_PICTURETQX_PACKAGE_SUGGESTS "python3-picturetqx, picturetqx-dev")
set(CPACK_DEBIAN_PICTURETQX_DESCRIPTION "image processing by scripts, exact to the byte
The plug-in PictureTQX for the REALbasic runtime, a pixel buffer in 22 byte
layouts with views, scaling, rotation, convolution, tone curves, blurs,
dithering and artistic filters, and tqx, a command that loads it as the runtime
would and runs scripts in the runtime's language on image files.
.
Every operation gives the same bytes on every processor. Pictures may lie in
memory or in files that are mapped a window at a time. The command also tests
plug-ins of one's own.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME picturetqx-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${ours}, libffi-dev, libmd-dev, libutf8proc-dev, libpcre2-dev, \
libfreetype-dev, libharfbuzz-dev, libwebp-dev, libpng-dev, libjpeg-dev, libtiff-dev, libgif-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "cmake, g++, pkg-config")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "plug-ins and programs of one's own with PictureTQX
The interface between a host and its plug-ins as headers, the desk host behind
tqx as static libraries, and what CMake finds both by:
find_package(PictureTQX).")

set(components picturetqx development)
if(TARGET python)
  list(APPEND components python)
  get_directory_property(major DIRECTORY python DEFINITION Python_VERSION_MAJOR)
  get_directory_property(minor DIRECTORY python DEFINITION Python_VERSION_MINOR)
  math(EXPR next "${minor} + 1")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-picturetqx)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${ours}, python3-numpy, python3 (>= ${major}.${minor}~), \
python3 (<< ${major}.${next}~)")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-dask, python3-distributed, python3-pil, python3-zarr")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
      "${CMAKE_SOURCE_DIR}/cmake/debian/postinst;${CMAKE_SOURCE_DIR}/cmake/debian/prerm")
  set(CPACK_DEBIAN_PYTHON_DESCRIPTION "PictureTQX from Python, on NumPy's arrays
The module tqx has the classes of the plug-in PictureTQX, made from the records
that it registers, with every member that scripts have. Pictures share the
memory of arrays. tqx.cluster works on many pictures, and on pictures larger
than a machine, with many processes.")
endif()
include(CPack)

if(TQX_DEBIAN)
  file(STRINGS LICENSE lines)
  list(SUBLIST lines 4 -1 lines)
  list(TRANSFORM lines PREPEND " ")
  list(TRANSFORM lines REPLACE "^ $" " .")
  list(JOIN lines "\n" licence)
  configure_file(cmake/debian/copyright.in copyright @ONLY)
  add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/changelog.gz DEPENDS CHANGELOG.md tools/debian_changelog.py
    COMMAND ${CMAKE_SOURCE_DIR}/tools/debian_changelog.py ${CMAKE_SOURCE_DIR}/CHANGELOG.md ${PROJECT_VERSION}
            ${TQX_MAINTAINER} > ${CMAKE_BINARY_DIR}/changelog
    COMMAND gzip -9 -n -f -k ${CMAKE_BINARY_DIR}/changelog VERBATIM)
  add_custom_target(changelog ALL DEPENDS ${CMAKE_BINARY_DIR}/changelog.gz)
  install(FILES cmake/debian/overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME picturetqx)
  foreach(component ${components})
    string(TOUPPER ${component} name)
    install(FILES ${CMAKE_BINARY_DIR}/copyright ${CMAKE_BINARY_DIR}/changelog.gz COMPONENT ${component}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${name}_PACKAGE_NAME})
  endforeach()
else()
  install(FILES LICENSE CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
endif()
