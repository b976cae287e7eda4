# `make package`: Debian packages by CPack, one for each component of the installation. Configure
# with the prefix /usr and without run paths, which such packages do not have.

# Every package says what changed and who may copy it.
# The day of the release, whenever the packages are made; SOURCE_DATE_EPOCH where it is set; or today.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md)
file(STRINGS CHANGELOG.md release REGEX "^## \\[${PROJECT_VERSION}\\] - [0-9-]+$")
string(TIMESTAMP day "%Y-%m-%d" UTC)  # heeds SOURCE_DATE_EPOCH
if(release AND NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  string(REGEX REPLACE ".* - " "" day "${release}")
endif()
execute_process(COMMAND date --utc --rfc-email --date=${day} OUTPUT_VARIABLE SARNUM_DATE
  OUTPUT_STRIP_TRAILING_WHITESPACE)
configure_file(cmake/debian/changelog.in debian/changelog @ONLY)
find_program(SARNUM_GZIP gzip)
function(sarnum_debian_documents component package)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/debian)
  if(SARNUM_GZIP)
    execute_process(COMMAND ${SARNUM_GZIP} -9nc ${folder}/changelog OUTPUT_FILE ${folder}/changelog.gz)
    install(FILES ${folder}/changelog.gz DESTINATION share/doc/${package} COMPONENT ${component}
      EXCLUDE_FROM_ALL)
  endif()
  install(FILES cmake/debian/copyright DESTINATION share/doc/${package} COMPONENT ${component}
    EXCLUDE_FROM_ALL)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package} PARENT_SCOPE)
endfunction()

set(library_package libsarnum${PROJECT_VERSION_MAJOR})
sarnum_debian_documents(library ${library_package})
sarnum_debian_documents(development libsarnum-dev)
sarnum_debian_documents(tools sarnum-tools)
sarnum_debian_documents(documentation sarnum-doc)
set(CPACK_COMPONENTS_ALL library development tools documentation)

set(about "Fourier transforms of lines and of rasters of any pixel type, a numeric
toolkit, linear systems and least-squares fits, spectral filters and
multilooking, with the same values at every instruction-set level.
")
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "numerical routines for radar images
${about}\nThis package holds the library, and the host that stores rasters through GDAL.")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "numerical routines for radar images (development files)
${about}\nThis package holds the headers, the CMake package and the pkg-config file.")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "command-line tool for radar images
${about}\nThis package holds the program sarnum: statistics, detection,\nmultilooking and spectra of raster files.")
set(CPACK_DEBIAN_DOCUMENTATION_DESCRIPTION "numerical routines for radar images (documentation)
${about}\nThis package holds the guides and the reference, to be read in a browser.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION science)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)

set(same_version "(= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${CMAKE_CURRENT_BINARY_DIR}/src ${CMAKE_CURRENT_BINARY_DIR}/src/host/standalone)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} ${same_version}")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${library_package} ${same_version}")

# Debian's libraries tell the linker by a trigger that they are there.
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/debian/triggers)

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGE_VENDOR "the sarnum maintainers")
set(CPACK_PACKAGE_CONTACT "sarnum maintainers <maintainers@sarnum.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
include(CPack)
