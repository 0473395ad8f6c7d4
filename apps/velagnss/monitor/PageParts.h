// The pages one by one, and what they share.
#ifndef VELAGNSS_APPS_PAGE_PARTS_H
#define VELAGNSS_APPS_PAGE_PARTS_H

#include <string>
#include <vector>

#include "apps/velagnss/monitor/Pages.h"

namespace Host {

// Each gives back the greatest `scroll` that shows something else.
int DrawOverview(const C_Pane& pane, const S_SourceView& view, const S_ScreenState& state);
int DrawSatellites(const C_Pane& pane, const S_SourceView& view, const S_ScreenState& state);
int DrawMessages(const C_Pane& pane, const S_SourceView& view, const S_ScreenState& state);
int DrawRaw(const C_Pane& pane, const S_SourceView& view, const S_ScreenState& state);
int DrawLog(const C_Pane& pane, const S_SourceView& view, const S_ScreenState& state);
int DrawHelp(const C_Pane& pane, const S_SourceView& view, const S_ScreenState& state);

// A bar upwards for each satellite, its name, and `*` if it is used.
void DrawSatelliteChart(const C_Pane& pane, const S_Epoch& epoch);
inline constexpr int kLeastChartRows = 5;

// Where the satellites are in the sky: north up, the zenith in the middle. Names of those that are not used are in
// lower case.
void DrawSky(const C_Pane& pane, const S_Epoch& epoch);

// The epoch whose satellites a page shows first: that of the sentences, else that of the first station; null if there
// is none.
const S_Aged<t_EpochPointer>* FirstEpoch(const S_SourceView& view);

// Lists of the messages page, with a line of titles.
int DrawMessageList(const C_Pane& pane, const S_SourceView& view, int scroll);
int DrawFaultList(const C_Pane& pane, const S_SourceView& view, int scroll);

// A list of `count` rows in a pane: which of them is the first one shown, and the greatest one that can be.
struct S_ListPart {
  S_ListPart(std::size_t count, int rows, int scroll);

  int most;
  int first;
};

// Heading of a page or part without anything to show.
void PutNothing(const C_Pane& pane, std::string_view why);

}  // namespace Host

#endif  // VELAGNSS_APPS_PAGE_PARTS_H
