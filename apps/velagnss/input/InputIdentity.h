// Which stream an input is, whatever its name and place: what results are known by that must not be stored twice.
#ifndef VELAGNSS_APPS_INPUT_IDENTITY_H
#define VELAGNSS_APPS_INPUT_IDENTITY_H

#include <string>

namespace Host {

// Of a regular file: 16 hexadecimal digits of the SHA-256 of its first 64 KiB, so that copies on other machines have
// the same, and a file that has grown since keeps it, if it had 64 KiB before. Of anything else: the name, without a
// password, and the time of the call, because what comes from there never comes again.
std::string IdentityOfInput(const std::string& name);

}  // namespace Host

#endif  // VELAGNSS_APPS_INPUT_IDENTITY_H
