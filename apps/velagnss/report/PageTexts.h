// The parts of the report's page that do not depend on its data. The build generates their definitions from the files
// in page/ and from dygraphs (cmake/EmbedReportPage.cmake).
#ifndef VELAGNSS_APPS_PAGE_TEXTS_H
#define VELAGNSS_APPS_PAGE_TEXTS_H

#include <string_view>

namespace Host::PageTexts {

extern const std::string_view kSkeleton;  // index.html: the names of the other parts in "{{" and "}}"
extern const std::string_view kStyle;
extern const std::string_view kLibrary;  // dygraphs
extern const std::string_view kScript;
extern const std::string_view kLicense;  // of dygraphs, as HTML text

}  // namespace Host::PageTexts

#endif  // VELAGNSS_APPS_PAGE_TEXTS_H
