SUMMARY = "Control of a GNSS timing receiver on a serial port"
# No licence has been chosen yet; choosing one is for the owner of orb-gnss to do.
LICENSE = "CLOSED"
PV = "0.1.0"

DEPENDS = "cli11 fmt libeigen ncurses nlohmann-json systemd tomlplusplus"

inherit cmake externalsrc features_check pkgconfig systemd useradd

EXTERNALSRC = "${@os.path.abspath('${THISDIR}/../../../..')}"
REQUIRED_DISTRO_FEATURES = "systemd"
EXTRA_OECMAKE = "-DBUILD_TESTING=OFF -DCMAKE_SKIP_INSTALL_RPATH=ON"

PACKAGE_BEFORE_PN = "${PN}-inventoryd ${PN}-tools"

FILES:${PN} += "${nonarch_base_libdir}/udev ${nonarch_libdir}/udev ${sysconfdir}/logrotate.d"
FILES:${PN}-tools = " \
    ${bindir}/orb-sim ${bindir}/orbctl ${libdir}/orb-gnss/liborb-sim-preload.so \
    ${datadir}/orb-gnss ${datadir}/bash-completion ${datadir}/fish ${datadir}/zsh"
FILES:${PN}-inventoryd = " \
    ${bindir}/orb-inventoryd ${datadir}/dbus-1 ${datadir}/orb-gnss/inventory.example.toml \
    ${nonarch_libdir}/sysusers.d ${nonarch_libdir}/systemd"
# Objects for a client's own tests are not stripped, and belong to what clients build with.
FILES:${PN}-dev += "${libdir}/cmake ${libdir}/orb-gnss/objects-*"

RDEPENDS:${PN}-tools = "dbus ${PN}-inventoryd"
RDEPENDS:${PN}-dev += "${PN}-staticdev"

SYSTEMD_PACKAGES = "${PN}-inventoryd"
SYSTEMD_SERVICE:${PN}-inventoryd = "orb-inventoryd.service"

USERADD_PACKAGES = "${PN}-inventoryd"
USERADD_PARAM:${PN}-inventoryd = "--system --no-create-home --shell /sbin/nologin --user-group orb-inventory"
