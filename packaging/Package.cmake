# The Debian package of the program and the admin tool: `cpack -G DEB` in the build folder
# (scripts/package.sh builds it and checks it with lintian).
include(GNUInstallDirs)

install(TARGETS zqrs zqrs-admin RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
set(ZQ_PKG ${CMAKE_CURRENT_LIST_DIR})
install(FILES ${ZQ_PKG}/org.zqrs.zqrs.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${ZQ_PKG}/org.zqrs.zqrs.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${ZQ_PKG}/org.zqrs.zqrs.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${ZQ_PKG}/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})

# Manual pages and the changelog go in compressed, as Debian wants them (no name or time inside).
foreach(doc zqrs.1 zqrs-admin.1 changelog)
  add_custom_command(OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/pkg/${doc}.gz
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/pkg
    COMMAND gzip -9nc ${ZQ_PKG}/${doc} > ${CMAKE_CURRENT_BINARY_DIR}/pkg/${doc}.gz
    DEPENDS ${ZQ_PKG}/${doc} VERBATIM)
  list(APPEND ZQ_PKG_DOCS ${CMAKE_CURRENT_BINARY_DIR}/pkg/${doc}.gz)
endforeach()
add_custom_target(zqrs_package_docs ALL DEPENDS ${ZQ_PKG_DOCS})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/pkg/zqrs.1.gz ${CMAKE_CURRENT_BINARY_DIR}/pkg/zqrs-admin.1.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/pkg/changelog.gz DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zqrs)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "zqrs developers <zqrs@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "personnel management for Chinese companies")
set(CPACK_PACKAGE_DESCRIPTION
    "A personnel office in one program: staff register and records,\n departments and posts, transfers, statistics, loans, certificates,\n housing, reports, meetings, notices and a document archive.\n zqrs-admin makes, upgrades, backs up, restores and copies company\n databases, on SQLite files or PostgreSQL servers.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Loaded at run time, so no library dependency names them: the SQL drivers of both engines, the
# screen plugins, a font with Chinese characters and the toolkit's own Chinese texts (its dialogs).
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "libqt6sql6-sqlite, libqt6sql6-psql, qt6-qpa-plugins, fonts-wqy-zenhei, qt6-translations-l10n")
include(CPack)
