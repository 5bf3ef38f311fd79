#pragma once

#include "http/sim_route_table.h"

namespace tolvane::sim {

// Routes for testing the transport itself rather than a platform service:
//   /sim/echo/<rule> (rule: query, mobile3, mobile2, common, none), also under the base
//   suffixes /api/v1, /api/videoPartner and /api, signed over "sim/echo/<rule>"; any method;
//   answers {"error":0,"data":{"method","path","query","headers","form","auth_ok","signed"}}.
//   /sim/status/<code>: answers that HTTP status with {"error":<code>,"data":"status <code>"}.
void addBuiltinRoutes(SimRouteTable& routes);

}  // namespace tolvane::sim
