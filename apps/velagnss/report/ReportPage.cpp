#include "apps/velagnss/report/ReportPage.h"

#include <fmt/core.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <stdexcept>

#include "apps/velagnss/report/PageTexts.h"

namespace Host {
namespace {

constexpr int kDigestSize = 32;                               // SHA-256
constexpr int kDigestTextSize = 4 * ((kDigestSize + 2) / 3);  // Base64

// The source of a block in a policy (Content Security Policy Level 3, 2.3.1).
std::string HashSource(std::string_view block) {
  std::array<unsigned char, kDigestSize> digest{};
  if (::EVP_Digest(block.data(), block.size(), digest.data(), nullptr, ::EVP_sha256(), nullptr) != 1)
    throw std::runtime_error("SHA-256 is not available");
  std::array<unsigned char, kDigestTextSize + 1> text{};
  ::EVP_EncodeBlock(text.data(), digest.data(), kDigestSize);
  return fmt::format("'sha256-{}'", reinterpret_cast<const char*>(text.data()));
}

std::string Policy() {
  return fmt::format("default-src 'none'; script-src {} {}; style-src {}; base-uri 'none'; form-action 'none'",
                     HashSource(PageTexts::kLibrary), HashSource(PageTexts::kScript), HashSource(PageTexts::kStyle));
}

// What HTML or an older JavaScript could take for more than a character of a string. In JSON they occur in strings
// alone, where the escape means the same.
struct S_Escape {
  std::string_view character, escape;
};
constexpr S_Escape kEscapes[] = {
    {"<", "\\u003c"}, {">", "\\u003e"}, {"&", "\\u0026"}, {"\xE2\x80\xA8", "\\u2028"}, {"\xE2\x80\xA9", "\\u2029"}};

const S_Escape* EscapeAtStart(std::string_view text) {
  const auto* const found =
      std::ranges::find_if(kEscapes, [text](const S_Escape& row) { return text.starts_with(row.character); });
  return found == std::end(kEscapes) ? nullptr : found;
}

std::string ScriptSafe(std::string_view json) {
  std::string safe;
  safe.reserve(json.size());
  while (!json.empty()) {
    const std::size_t plain = std::min(json.find_first_of("<>&\xE2"), json.size());
    safe += json.substr(0, plain);
    json.remove_prefix(plain);
    const S_Escape* const escape = EscapeAtStart(json);
    safe += escape ? escape->escape : json.substr(0, 1);
    json.remove_prefix(std::min(escape ? escape->character.size() : 1, json.size()));
  }
  return safe;
}

struct S_Part {
  std::string_view name;
  std::string text;
};

const std::string& TextOf(std::string_view name, const auto& parts) {
  const auto found = std::ranges::find(parts, name, &S_Part::name);
  if (found == std::end(parts)) throw std::logic_error(fmt::format("the page has no part {}", name));
  return found->text;
}

}  // namespace

std::string ReportPage(std::string_view json) {
  const std::array parts = {
      S_Part{"policy", Policy()},
      S_Part{"style", std::string(PageTexts::kStyle)},
      S_Part{"library", std::string(PageTexts::kLibrary)},
      S_Part{"script", std::string(PageTexts::kScript)},
      S_Part{"license", std::string(PageTexts::kLicense)},
      S_Part{"data", ScriptSafe(json)},
  };
  std::string page;
  std::string_view rest = PageTexts::kSkeleton;
  for (std::size_t open = rest.find("{{"); open != std::string_view::npos; open = rest.find("{{")) {
    const std::size_t close = rest.find("}}", open);
    page += rest.substr(0, open);
    page += TextOf(rest.substr(open + 2, close - open - 2), parts);
    rest.remove_prefix(close + 2);
  }
  page += rest;
  return page;
}

}  // namespace Host
