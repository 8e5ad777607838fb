#pragma once

// The whole interface of liborb-gnss. A client needs orbController alone.

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
