// What a caster answers to a request.
#ifndef VELAGNSS_APPS_CASTER_ANSWER_H
#define VELAGNSS_APPS_CASTER_ANSWER_H

#include <functional>
#include <string>
#include <string_view>

#include "apps/velagnss/net/ntrip/HttpHead.h"

namespace Host {

struct S_CasterAnswer {
  std::string text = {};    // head, and the whole body where there is one
  bool isStream = false;    // the stream of `mount` follows
  bool usesChunks = false;  // in chunks
  bool isDenied = false;    // wrong account: to be sent after a pause, against those who try many
  std::string mount = {};
};

// What the answer depends on.
struct S_CasterView {
  std::string_view table;  // lines of the source table, with the last one
  std::string_view date;   // of HTTP
  std::function<bool(const std::string& mount)> hasMount;
  std::function<bool(const std::string& mount, std::string_view authorization)> mayRead;
};

// Clients speak version 1 unless they say otherwise, and whoever is no client of NTRIP is a browser.
S_CasterAnswer AnswerTo(const S_HttpHead& request, const S_CasterView& view);

// To anything that is not a request, and when all places are taken.
std::string BadRequestText(std::string_view date);
std::string BusyText(std::string_view date);

}  // namespace Host

#endif  // VELAGNSS_APPS_CASTER_ANSWER_H
