// A name as the text of an XML element.
#ifndef VELAGNSS_APPS_XML_TEXT_H
#define VELAGNSS_APPS_XML_TEXT_H

#include <string>
#include <string_view>

namespace Host {

// What is not text in UTF-8 or not a character of XML 1.0 is shown by its bytes, "\xNN".
std::string XmlText(std::string_view text);

}  // namespace Host

#endif  // VELAGNSS_APPS_XML_TEXT_H
