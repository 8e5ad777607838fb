#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <cstring>
#include <sstream>

#include "dbus/inventory_interface.h"
#include "dbus/sd_bus_handles.h"
#include "support/private_bus.h"
#include "support/temporary_folder.h"

/// The service as others on the bus see it: the described interface, and the policy about it.
namespace orb::test {
namespace {

using ::testing::HasSubstr;

constexpr char kOneModule[] = "[[module]]\nlocation = 1\n";

BusHandle connect() {
  sd_bus* bus = nullptr;
  EXPECT_GE(sd_bus_open_system(&bus), 0);
  return BusHandle(bus);
}

/// The methods of the inventory's interface in introspection data: their tags, one per line.
std::string interfaceIn(const std::string& xml) {
  std::string start = "<interface name=\"";
  start += inventory::kInterface;
  start += "\">";
  const std::size_t first = xml.find(start);
  if (first == std::string::npos) {
    return "no such interface";
  }
  std::istringstream text(xml.substr(first, xml.find("</interface>", first) - first));
  std::string tags;
  for (std::string line; std::getline(text, line);) {
    const std::size_t tag = line.find_first_not_of(' ');
    for (const char* const kind : {"<method ", "<arg ", "</method>", "<property ", "<signal "}) {
      if (tag != std::string::npos && line.compare(tag, std::strlen(kind), kind) == 0) {
        tags += line.substr(tag) + "\n";
      }
    }
  }
  return tags;
}

std::string introspect(sd_bus* bus) {
  sd_bus_message* raw = nullptr;
  const char* xml = "";
  EXPECT_GE(
      sd_bus_call_method(bus, inventory::kBusName, inventory::kObjectPath,
                         "org.freedesktop.DBus.Introspectable", "Introspect", nullptr, &raw, ""),
      0);
  const MessageHandle answer(raw);
  EXPECT_GE(sd_bus_message_read(raw, "s", &xml), 0);
  return xml;
}

class InventoryInterface : public ::testing::Test {
 protected:
  TemporaryFolder folder_;
  PrivateBus bus_{folder_.path()};
  InventoryService service_{bus_, kOneModule};
};

TEST_F(InventoryInterface, IsTheOneThatIsInstalled) {
  const std::string installed = interfaceIn(contentOf(ORB_INTERFACE_FILE));
  EXPECT_THAT(installed, HasSubstr("<arg type=\"au\" name=\"locations\" direction=\"out\"/>\n"));
  EXPECT_EQ(interfaceIn(introspect(connect().get())), installed);
}

TEST_F(InventoryInterface, NamesAnEmptyLocationInAnError) {
  const BusHandle client = connect();
  sd_bus_error error{};
  EXPECT_LT(
      sd_bus_call_method(client.get(), inventory::kBusName, inventory::kObjectPath,
                         inventory::kInterface, inventory::kGetI2CBus, &error, nullptr, "u", 7),
      0);
  EXPECT_STREQ(error.name, "org.orb_gnss.Inventory1.Error.NoSuchModule");
  EXPECT_STREQ(error.message, "location 7 holds no module");
  sd_bus_error_free(&error);
}

/// What a system bus allows before any service's policy is read: signals, answers, and calls of the
/// bus daemon itself.
constexpr char kSystemPolicy[] = R"(
<policy context="default">
  <allow user="*"/>
  <deny own="*"/>
  <deny send_type="method_call"/>
  <allow send_type="signal"/>
  <allow send_requested_reply="true" send_type="method_return"/>
  <allow send_requested_reply="true" send_type="error"/>
  <allow receive_type="method_call"/>
  <allow receive_type="method_return"/>
  <allow receive_type="error"/>
  <allow receive_type="signal"/>
  <allow send_destination="org.freedesktop.DBus"/>
</policy>
)";

class InventoryPolicy : public ::testing::Test {
 protected:
  /// A system bus with the shipped policy, where the user `owner` stands in place of root and of
  /// the service's own user.
  std::string policyFor(uid_t owner) {
    std::string policy = contentOf(ORB_POLICY_FILE);
    for (const std::string& user : {std::string("\"root\""), std::string("\"orb-inventory\"")}) {
      const std::size_t place = policy.find(user);
      EXPECT_NE(place, std::string::npos);
      policy.replace(place, user.size(), '"' + std::to_string(owner) + '"');
    }
    fill(folder_ / "policy.conf", policy);
    return kSystemPolicy + ("<include>" + (folder_ / "policy.conf").string() + "</include>");
  }

  TemporaryFolder folder_;
};

TEST_F(InventoryPolicy, IsAcceptedAsItStands) {
  const PrivateBus bus(folder_.path(),
                       std::string(kSystemPolicy) + "<include>" ORB_POLICY_FILE "</include>");
  EXPECT_FALSE(bus.hasOwner(inventory::kBusName));
}

TEST_F(InventoryPolicy, WouldStopTheBusIfItWereBroken) {
  EXPECT_THROW(
      PrivateBus(folder_.path(), "<policy context=\"default\"><allow owns=\"x\"/></policy>"),
      std::runtime_error);
}

TEST_F(InventoryPolicy, LetsTheServiceBeReadAndNothingElse) {
  const PrivateBus bus(folder_.path(), policyFor(getuid()));
  const InventoryService service(bus, kOneModule);
  const BusHandle client = connect();
  const auto errorOf = [&](const char* interface, const char* method) {
    sd_bus_error error{};
    sd_bus_call_method(client.get(), inventory::kBusName, inventory::kObjectPath, interface, method,
                       &error, nullptr, "");
    const std::string name = error.name == nullptr ? "" : error.name;
    sd_bus_error_free(&error);
    return name;
  };
  EXPECT_EQ(errorOf(inventory::kInterface, inventory::kGetModuleLocations), "");
  EXPECT_EQ(errorOf("org.freedesktop.DBus.Introspectable", "Introspect"), "");
  EXPECT_EQ(errorOf("org.freedesktop.DBus.Peer", "Ping"), "");
  EXPECT_EQ(errorOf("org.freedesktop.DBus.Properties", "GetAll"),
            "org.freedesktop.DBus.Error.AccessDenied");
}

TEST_F(InventoryPolicy, LetsNobodyElseBeTheService) {
  const PrivateBus bus(folder_.path(), policyFor(getuid() + 1));
  const std::filesystem::path inventory = folder_ / "inventory.toml";
  fill(inventory, kOneModule);
  ChildProcess service({ORB_INVENTORYD, "--config", inventory.string()}, folder_ / "output");
  EXPECT_EQ(service.wait(std::chrono::seconds(30)), 1);
  EXPECT_EQ(service.output(),
            "orb-inventoryd: cannot take the name org.orb_gnss.Inventory1: Permission denied\n");
}

}  // namespace
}  // namespace orb::test
