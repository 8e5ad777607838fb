#pragma once

/// \mainpage
/// orbController is the receiver as a client sees it, and orbSupervisedController the same with a
/// deadline for each call; ORBControlInterface describes the operations of both, with results,
/// units and ranges, and orbController_QN4470T01 the further ones of the module's driver. Clients
/// need no more.
///
/// What orbController learns of the device comes from the classes of orb-platform/orb-platform.h,
/// which a board can bring itself. orb::sim has the simulated receiver, for test programs.

/// \file
/// The whole interface of liborb-gnss.

#include "orb-gnss/catalogue.h"
#include "orb-gnss/chip_enable.h"
#include "orb-gnss/control_interface.h"
#include "orb-gnss/controller.h"
#include "orb-gnss/hardware_discovery.h"
#include "orb-gnss/message.h"
#include "orb-gnss/message_builder.h"
#include "orb-gnss/message_list.h"
#include "orb-gnss/messaging_interface.h"
#include "orb-gnss/module_driver.h"
#include "orb-gnss/null_controller.h"
#include "orb-gnss/packet.h"
#include "orb-gnss/serial_channel.h"
#include "orb-gnss/supervised_controller.h"
