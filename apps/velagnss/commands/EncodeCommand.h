// `velagnss encode`: lines of JSON to NMEA 0183 sentences.
#ifndef VELAGNSS_APPS_ENCODE_COMMAND_H
#define VELAGNSS_APPS_ENCODE_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kEncodeCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_ENCODE_COMMAND_H
