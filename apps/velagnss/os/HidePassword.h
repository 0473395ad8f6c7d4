// Addresses of casters may have a password in them, which nobody else shall see.
#ifndef VELAGNSS_APPS_HIDE_PASSWORD_H
#define VELAGNSS_APPS_HIDE_PASSWORD_H

#include <span>

namespace Host {

// Paints over the password of the address that `word` may be.
void HidePassword(std::span<char> word);

}  // namespace Host

#endif  // VELAGNSS_APPS_HIDE_PASSWORD_H
