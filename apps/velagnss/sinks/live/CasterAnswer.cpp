#include "apps/velagnss/sinks/live/CasterAnswer.h"

#include <fmt/core.h>

#include <vector>

namespace Host {
namespace {

constexpr std::string_view kServer = "NTRIP velagnss/" VELAGNSS_VERSION;

// A head of HTTP. `fields`: further ones, each with its line end.
std::string HttpText(std::string_view status, std::string_view date, std::string_view fields, std::string_view body) {
  return fmt::format(
      "HTTP/1.1 {}\r\nNtrip-Version: Ntrip/2.0\r\nServer: {}\r\nDate: {}\r\n{}Content-Length: {}\r\n"
      "Connection: close\r\n\r\n{}",
      status, kServer, date, fields, body.size(), body);
}

std::string TableV1(const S_CasterView& view) {
  return fmt::format(
      "SOURCETABLE 200 OK\r\nServer: {}\r\nDate: {}\r\nConnection: close\r\nContent-Type: text/plain\r\n"
      "Content-Length: {}\r\n\r\n{}",
      kServer, view.date, view.table.size(), view.table);
}

std::string TableV2(const S_CasterView& view) {
  return HttpText("200 OK", view.date, "Content-Type: gnss/sourcetable\r\n", view.table);
}

std::string TableForBrowsers(const S_CasterView& view) {
  return HttpText("200 OK", view.date, "Content-Type: text/plain\r\n", view.table);
}

std::string StreamHeadV2(std::string_view date, bool usesChunks) {
  return fmt::format(
      "HTTP/1.1 200 OK\r\nNtrip-Version: Ntrip/2.0\r\nServer: {}\r\nDate: {}\r\n"
      "Cache-Control: no-store, no-cache, max-age=0\r\nPragma: no-cache\r\nConnection: close\r\n"
      "Content-Type: gnss/data\r\n{}\r\n",
      kServer, date, usesChunks ? "Transfer-Encoding: chunked\r\n" : "");
}

std::string Denied(std::string_view mount, std::string_view date) {
  return HttpText("401 Unauthorized", date, fmt::format("WWW-Authenticate: Basic realm=\"/{}\"\r\n", mount), {});
}

// The mount of "GET /MOUNT?query HTTP/1.1"; empty for the source table.
std::string MountOf(std::string_view target) {
  target = target.substr(0, target.find('?'));
  if (target.starts_with('/')) target.remove_prefix(1);
  return std::string(target);
}

}  // namespace

std::string BadRequestText(std::string_view date) { return HttpText("400 Bad Request", date, {}, {}); }
std::string BusyText(std::string_view date) {
  return HttpText("503 Service Unavailable", date, "Retry-After: 60\r\n", {});
}

S_CasterAnswer AnswerTo(const S_HttpHead& request, const S_CasterView& view) {
  if (request.kind == S_HttpHead::eKind::Source) return {.text = "ERROR - this caster takes no streams\r\n"};
  if (request.kind != S_HttpHead::eKind::Request) return {.text = BadRequestText(view.date)};
  const std::vector<std::string_view> words = WordsOf(request.firstLine);
  if (words[0] != "GET") return {.text = HttpText("501 Not Implemented", view.date, {}, {})};
  const bool isV2 = request.Field("ntrip-version").find('2') != std::string_view::npos;
  const bool isBrowser = !isV2 && !InLowerCase(request.Field("user-agent")).starts_with("ntrip");
  std::string mount = MountOf(words[1]);
  if (isBrowser) return {.text = TableForBrowsers(view)};
  if (mount.empty()) return {.text = isV2 ? TableV2(view) : TableV1(view)};
  if (!view.hasMount(mount)) return {.text = isV2 ? HttpText("404 Not Found", view.date, {}, {}) : TableV1(view)};
  if (!view.mayRead(mount, request.Field("authorization")))
    return {.text = Denied(mount, view.date), .isDenied = true, .mount = mount};
  const bool usesChunks = isV2 && !request.isHttp10;
  return {.text = isV2 ? StreamHeadV2(view.date, usesChunks) : "ICY 200 OK\r\n\r\n",
          .isStream = true,
          .usesChunks = usesChunks,
          .mount = std::move(mount)};
}

}  // namespace Host
