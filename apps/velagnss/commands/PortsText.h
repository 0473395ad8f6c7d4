// Serial ports as a table and as JSON.
#ifndef VELAGNSS_APPS_PORTS_TEXT_H
#define VELAGNSS_APPS_PORTS_TEXT_H

#include <string>
#include <vector>

#include "apps/velagnss/os/PortList.h"
#include "apps/velagnss/text/JsonWriter.h"

namespace Host {

// A line for each port, and another one for its lasting name.
std::string PortsTable(const std::vector<S_PortInfo>& ports);

// An object for each port.
void WritePorts(const std::vector<S_PortInfo>& ports, C_JsonWriter& json);

}  // namespace Host

#endif  // VELAGNSS_APPS_PORTS_TEXT_H
