# The Debian package, as cpack makes it.
set(STILLWICK_MAINTAINER "Stillwick <stillwick@localhost>" CACHE STRING
    "Who answers for a package: a name and an address")
set(STILLWICK_DATE "Thu, 01 Jan 1970 00:00:00 +0000" CACHE STRING "Of a package's changelog")

stillwick_compressed(changelog ${CMAKE_INSTALL_DOCDIR})
install(FILES copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_CONTACT ${STILLWICK_MAINTAINER})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What is linked is found out (dpkg-shlibdeps); what is only looked for while running is named.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-translations-l10n, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "pipewire-pulse | pulseaudio, shared-mime-info, desktop-file-utils, hicolor-icon-theme")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "images exactes d'une vidéo, détourées")
set(CPACK_PACKAGE_DESCRIPTION "\
Stillwick prend dans une vidéo l'image exacte d'un instant, en détoure le
sujet, le dessine dans un style, l'annote et l'enregistre en PNG
transparent, avec un index en Markdown. Une fenêtre et une ligne de
commande font le même travail.
.
Le détourage vient d'un réseau qui fait partie du programme : rien n'est
téléchargé, rien n'est envoyé.")
include(CPack)
