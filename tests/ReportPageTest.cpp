// The page of the report as text: what its policy allows, and data that cannot become markup.
#include "apps/velagnss/report/ReportPage.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Cases.h"

namespace {

// The contents of each element that begins with `open`.
std::vector<std::string> Blocks(const std::string& page, const std::string& open, const std::string& close) {
  std::vector<std::string> blocks;
  for (std::size_t at = page.find(open); at != std::string::npos; at = page.find(open, at)) {
    at += open.size();
    blocks.push_back(page.substr(at, page.find(close, at) - at));
  }
  return blocks;
}

std::string Data(const std::string& page) {
  return Blocks(page, R"(<script type="application/json" id="report">)", "</script>").at(0);
}

std::string Sha256(const std::string& block) {
  std::array<unsigned char, 32> digest{};
  EXPECT_EQ(::EVP_Digest(block.data(), block.size(), digest.data(), nullptr, ::EVP_sha256(), nullptr), 1);
  std::array<unsigned char, 45> text{};
  ::EVP_EncodeBlock(text.data(), digest.data(), digest.size());
  return reinterpret_cast<const char*>(text.data());
}

TEST(ReportPage, PolicyAllowsItsOwnBlocksAndNothingElse) {
  const std::string page = Host::ReportPage("{}");
  const std::vector<std::string> scripts = Blocks(page, "<script>", "</script>");
  const std::vector<std::string> styles = Blocks(page, "<style>", "</style>");
  ASSERT_EQ(scripts.size(), 2U);
  ASSERT_EQ(styles.size(), 1U);
  EXPECT_NE(page.find("content=\"default-src 'none'; script-src 'sha256-" + Sha256(scripts[0]) + "' 'sha256-" +
                      Sha256(scripts[1]) + "'; style-src 'sha256-" + Sha256(styles[0]) + "'; "),
            std::string::npos);
  EXPECT_EQ(page.find("sourceMappingURL"), std::string::npos);
}

TEST(ReportPage, CarriesTheLicenseOfItsLibrary) {
  const std::string page = Host::ReportPage("{}");
  EXPECT_NE(page.find("Permission is hereby granted, free of charge"), std::string::npos);
  EXPECT_NE(page.find("Dan Vanderkam &lt;"), std::string::npos);
}

struct S_TextRow {
  const char* name;
  std::string text;
};
const S_TextRow kTexts[] = {
    {"EndOfScript", "</script><script>alert(1)</script>"},
    {"Comment", "<!--<script>"},
    {"Entities", "&lt;&#60;"},
    {"NameOfAPart", "{{license}}"},
    {"LineSeparators", "a\xE2\x80\xA8z\xE2\x80\xA9"},
    {"OtherCharactersWithTheirFirstByte", "\xE2\x82\xAC\xE2\x80\xA6"},
    {"QuotesAndControls", "\"'\\\n\x01"},
};
TEST_ROWS(ReportPageText, StaysTextOfTheData, kTexts, row) {
  const nlohmann::json wanted = {{"name", row.text}};
  const std::string data = Data(Host::ReportPage(wanted.dump()));
  EXPECT_EQ(nlohmann::json::parse(data), wanted);
  for (const char* const markup : {"<", ">", "&", "\xE2\x80\xA8", "\xE2\x80\xA9"})
    EXPECT_EQ(data.find(markup), std::string::npos) << markup;
}

}  // namespace
