// The texts of the statuses: one for each, and a sensible one for anything else.
#include "status.h"

#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <string>

#include "abi/programs.h"
#include "support/temp_dir.h"

namespace gwq::test {
namespace {

namespace fs = std::filesystem;

const fs::path kSource = fs::path(GWQ_SOURCE_DIR) / "src";

using Statuses = std::map<std::string, int>;

// Name and value of each constant of an enumeration in a header's text.
Statuses Enumeration(const std::string& header, const std::string& name) {
  const std::string text = ReadFile(kSource / header);
  const std::size_t begin = text.find("enum " + name + " {");
  const std::string body = text.substr(begin, text.find("};", begin) - begin);
  const std::regex constant(R"((GWQ_\w+)\s*=\s*(-?\d+))");
  Statuses statuses;
  for (std::sregex_iterator at(body.begin(), body.end(), constant); at != std::sregex_iterator(); ++at) {
    statuses.emplace((*at)[1], std::stoi((*at)[2]));
  }
  EXPECT_FALSE(statuses.empty()) << name;
  return statuses;
}

Statuses AllStatuses() {
  return Enumeration("frame/port.h", "GwqStatus");
}

// A whole sentence, and no byte of the source's lines in it.
bool IsSentence(const std::string& text, const std::string& stop) {
  return text.size() > stop.size() && text.ends_with(stop) && text.find('\n') == std::string::npos;
}

TEST(StatusTexts, NameEveryStatusByItsConstant) {
  for (const auto& [name, status] : AllStatuses()) EXPECT_EQ(GwqStatusName(status), name);
}

TEST(StatusTexts, HaveOneEntryForEachStatusAndNoOther) {
  const std::string text = ReadFile(kSource / "status.h");
  const std::regex entry(R"re(\{\s*GWQ_\w+,\s*"(GWQ_\w+)")re");
  std::multiset<std::string> entries;
  for (std::sregex_iterator at(text.begin(), text.end(), entry); at != std::sregex_iterator(); ++at) {
    entries.insert((*at)[1]);
  }
  std::multiset<std::string> names;
  for (const auto& [name, status] : AllStatuses()) names.insert(name);
  EXPECT_EQ(entries, names);
}

TEST(StatusTexts, GiveEachStatusACauseAndARemedyOfItsOwnInBothLanguages) {
  std::set<std::string> causes;
  for (const auto& [name, status] : AllStatuses()) {
    for (const int language : {GWQ_ENGLISH, GWQ_CHINESE}) {
      const std::string stop = language == GWQ_CHINESE ? "。" : ".";
      EXPECT_TRUE(IsSentence(GwqStatusCause(status, language), stop)) << name;
      EXPECT_TRUE(IsSentence(GwqStatusRemedy(status, language), stop)) << name;
      EXPECT_TRUE(causes.insert(GwqStatusCause(status, language)).second) << name;
    }
  }
}

TEST(StatusTexts, KnowEveryNegativeValueThatADeclarationMentions) {
  const std::regex mention(R"((^|[ (,;/])(-\d+)\b)");
  std::set<int> mentioned;
  for (const auto& header : fs::recursive_directory_iterator(kSource)) {
    const std::string text = header.path().extension() == ".h" ? ReadFile(header.path()) : "";
    if (text.find("GWQ_API ") == std::string::npos) continue;
    for (std::sregex_iterator at(text.begin(), text.end(), mention); at != std::sregex_iterator(); ++at) {
      mentioned.insert(std::stoi((*at)[2]));
    }
  }
  EXPECT_GT(mentioned.size(), 10U);
  for (const int status : mentioned) EXPECT_STRNE(GwqStatusName(status), "GWQ_UNKNOWN") << status;
}

TEST(StatusTexts, TellPositiveValuesFromStatusesNobodyKnows) {
  for (const int value : {1, 2, 0x6D00, INT_MAX}) EXPECT_STREQ(GwqStatusName(value), "GWQ_VALUE");
  for (const int status : {-13, -400, -999, INT_MIN}) {
    EXPECT_STREQ(GwqStatusName(status), "GWQ_UNKNOWN");
    EXPECT_TRUE(IsSentence(GwqStatusCause(status, GWQ_ENGLISH), "."));
    EXPECT_TRUE(IsSentence(GwqStatusRemedy(status, GWQ_CHINESE), "。"));
  }
}

TEST(StatusTexts, AreEnglishForALanguageNobodyKnows) {
  EXPECT_STREQ(GwqStatusCause(GWQ_OK, 3), GwqStatusCause(GWQ_OK, GWQ_ENGLISH));
}

}  // namespace
}  // namespace gwq::test
