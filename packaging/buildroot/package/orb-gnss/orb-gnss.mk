################################################################################
#
# orb-gnss
#
################################################################################

ORB_GNSS_VERSION = 0.1.0
# The sources that this tree lies in.
ORB_GNSS_SITE = $(BR2_EXTERNAL_ORB_GNSS_PATH)/../..
ORB_GNSS_SITE_METHOD = local
ORB_GNSS_INSTALL_STAGING = YES
ORB_GNSS_DEPENDENCIES = \
	cli11 dbus eigen fmt host-pkgconf json-for-modern-cpp ncurses systemd tomlplusplus
ORB_GNSS_CONF_OPTS = -DBUILD_TESTING=OFF

define ORB_GNSS_USERS
	orb-inventory -1 orb-inventory -1 * - - - Inventory of the device's modules
endef

$(eval $(cmake-package))
