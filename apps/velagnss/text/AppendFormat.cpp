#include "apps/velagnss/text/AppendFormat.h"

#include <iterator>

namespace Host {

void AppendFormatted(std::string& text, fmt::string_view format, fmt::format_args arguments) {
  fmt::vformat_to(std::back_inserter(text), format, arguments);
}

}  // namespace Host
