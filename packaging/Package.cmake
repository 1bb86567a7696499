# The Debian packages that `./package` makes, one a component: `cpack` in a build that was configured with the preset
# "package".
include(GNUInstallDirs)

set(CPACK_GENERATOR DEB)
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/addresses CPACK_PACKAGE_CONTACT REGEX "^maintainer=")
string(REPLACE "maintainer=" "" CPACK_PACKAGE_CONTACT "${CPACK_PACKAGE_CONTACT}")
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/addresses CPACK_PACKAGE_HOMEPAGE_URL REGEX "^homepage=")
string(REPLACE "homepage=" "" CPACK_PACKAGE_HOMEPAGE_URL "${CPACK_PACKAGE_HOMEPAGE_URL}")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_SET_DESTDIR ON) # the files name the prefix
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL vellux)
if(VELLUX_SIMULATOR)
  list(APPEND CPACK_COMPONENTS_ALL vellux-simulator)
endif()
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/Finish.cmake)
set(CPACK_VELLUX_SOURCE_DIR ${PROJECT_SOURCE_DIR}) # for that script

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 0vellux1) # below a distribution's own, which begin with 1
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

# What no scan of the programs finds: Wayland's platform plugin, and the authorities that sign servers' certificates.
# Without libqt6svg6 a plain disc stands for the icon. Of desktops, GNOME alone needs an extension for tray icons.
set(tray_hosts gnome-shell-extension-appindicator plasma-workspace xfce4-panel mate-panel lxqt-panel cinnamon)
list(JOIN tray_hosts " | " tray_hosts)
set(CPACK_DEBIAN_VELLUX_PACKAGE_DEPENDS "qt6-wayland, ca-certificates")
set(CPACK_DEBIAN_VELLUX_PACKAGE_RECOMMENDS "libqt6svg6, ${tray_hosts}")
set(CPACK_DEBIAN_VELLUX_PACKAGE_SUGGESTS "vellux-simulator, libglib2.0-bin")
set(CPACK_DEBIAN_VELLUX_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_LIST_DIR}/debian/postinst ${CMAKE_CURRENT_LIST_DIR}/debian/postrm)
set(CPACK_DEBIAN_VELLUX_PACKAGE_NAME vellux)
set(CPACK_COMPONENT_VELLUX_DESCRIPTION "show your presence on a USB light
Vellux follows your presence on a Lync or Skype for Business server and
shows it on a USB presence light: green while you are available, red while
you are busy, yellow while you are away, purple when you don't want to be
disturbed, and dark when you are offline. The light can flash while you are
on the phone, and can be set to any of its colours by hand.")

set(CPACK_DEBIAN_VELLUX-SIMULATOR_PACKAGE_DEPENDS qt6-wayland)
set(CPACK_DEBIAN_VELLUX-SIMULATOR_PACKAGE_SUGGESTS vellux)
set(CPACK_DEBIAN_VELLUX-SIMULATOR_PACKAGE_NAME vellux-simulator)
set(CPACK_COMPONENT_VELLUX-SIMULATOR_DESCRIPTION "try Vellux without a server and without a light
The simulator runs Vellux against a presence server of its own on this
computer and a virtual USB presence light: in its window, with a panel to
play the world, or without one, as a script says.")

include(CPack)
