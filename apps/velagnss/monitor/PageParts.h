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
using t_SatelliteList = std::vector<S_EpochSatellite>;
void DrawSatelliteChart(const C_Pane& pane, const t_SatelliteList& satellites);
inline constexpr int kLeastChartRows = 5;

// Where the satellites are in the sky: north up, the zenith in the middle. Names of those that are not used are in
// lower case.
void DrawSky(const C_Pane& pane, const t_SatelliteList& satellites);
bool HasSky(const t_SatelliteList& satellites);  // azimuth and elevation of one at least

// The satellites that a page shows first: those of the sentences, else those of the first station; null without any.
const S_Aged<t_Sky>* FirstSky(const S_SourceView& view);

// How many are used; nothing when no sentence says so.
std::optional<std::size_t> UsedOf(const t_SatelliteList& satellites);

// Lists with a line of titles: messages, their protocols, faults.
int DrawProtocolList(const C_Pane& pane, const S_SourceView& view);
int DrawMessageList(const C_Pane& pane, const S_SourceView& view, int scroll);
int DrawFaultList(const C_Pane& pane, const S_SourceView& view, int scroll);

// A list of `count` rows in a pane: which of them is the first one shown, and the greatest one that can be.
struct S_ListPart {
  S_ListPart(std::size_t count, int rows, int scroll);

  // The place in the list of a row of the part; the list may have ended before.
  std::size_t At(int row) const { return static_cast<std::size_t>(first) + static_cast<std::size_t>(row); }

  int most;
  int first;
};

inline constexpr std::string_view kNoSatellites =
    "No satellites: neither GSV or GSA sentences nor observations have come.";

// A part without anything to show, and why.
void PutNothing(const C_Pane& pane, std::string_view why);

}  // namespace Host

#endif  // VELAGNSS_APPS_PAGE_PARTS_H
