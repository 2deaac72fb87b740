# The parts of the installation that only Debian has, and what CPack has to know.
find_program(GZIP gzip REQUIRED)

# Installs `source` under the name `name`.gz in `folder`, the same bytes each time.
function(install_compressed source name folder)
  set(made ${CMAKE_CURRENT_BINARY_DIR}/${name}.gz)
  add_custom_command(OUTPUT ${made} COMMAND ${GZIP} -9nc ${source} > ${made} DEPENDS ${source}
    VERBATIM)
  string(MAKE_C_IDENTIFIER compressed_${name} target)
  add_custom_target(${target} ALL DEPENDS ${made})
  install(FILES ${made} DESTINATION ${folder})
endfunction()

set(DOC_DIR ${CMAKE_INSTALL_FULL_DOCDIR})
file(READ paths.mdoc PATHS)
file(READ log_options.mdoc LOG_OPTIONS)
file(READ order_options.mdoc ORDER_OPTIONS)
foreach(page ${man_pages})
  configure_file(${page}.1.in ${page}.1 @ONLY)
  install_compressed(${CMAKE_CURRENT_BINARY_DIR}/${page}.1 ${page}.1 ${CMAKE_INSTALL_MANDIR}/man1)
endforeach()
set(release 1)
configure_file(debian/changelog.in changelog.Debian @ONLY)
install_compressed(${PROJECT_SOURCE_DIR}/CHANGELOG.md changelog ${CMAKE_INSTALL_DOCDIR})
install_compressed(${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian changelog.Debian
  ${CMAKE_INSTALL_DOCDIR})
install(FILES debian/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zanvik)
set(CPACK_PACKAGE_VENDOR "zanvik maintainers")
set(CPACK_PACKAGE_CONTACT "zanvik maintainers <maintainers@zanvik.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "forensic reader of Windows event logs")
set(CPACK_STRIP_FILES ON)
# Whatever the umask is.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${release})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What zanvik-fleet runs.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "parallel, slurm-client")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"zanvik reads Windows event logs (.evtx, and the older .evt), whole or damaged,
and writes their records as tables, comma separated values, timeline rows, JSON
lines or XML. It finds the events that Sigma rules match, and checks whether a
log is whole. Built-in reports show logons, password changes, changes of accounts
and of the clock, starts and stops of the system, USB devices and attached
disks; further ones are written in a small language. Records can be recovered
from the free space of a log.")
include(CPack)
