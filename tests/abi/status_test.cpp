// SPDX-License-Identifier: MIT
// The texts of the statuses: one for each, and a sensible one for anything else.
#include <gwq/status.h>

#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "abi/programs.h"
#include "abi/status_in_c.h"
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
  return Enumeration("status_codes.h", "GwqStatus");
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
  const std::regex entry(R"re(\{\s*GWQ_\w+,\s*"(GWQ_[A-Z0-9_]+)")re");
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

// What status.h says of functions in particular: each row's status and functions.
std::vector<std::pair<int, std::string>> FunctionRows() {
  const std::string text = ReadFile(kSource / "status.h");
  const Statuses statuses = AllStatuses();
  const std::regex row(R"re(\{(GWQ_\w+),\s*((?:"[A-Z]\w+(?: \w+)* ?"\s*)+),\s*\{")re");
  std::vector<std::pair<int, std::string>> rows;
  for (std::sregex_iterator at(text.begin(), text.end(), row); at != std::sregex_iterator(); ++at) {
    if ((*at)[2].str() == "\"" + (*at)[1].str() + "\"") continue;  // a status and its own name
    rows.emplace_back(statuses.at((*at)[1]), std::regex_replace((*at)[2].str(), std::regex("\"\\s*"), ""));
  }
  return rows;
}

std::set<std::pair<int, std::string>> FunctionStatuses() {
  std::set<std::pair<int, std::string>> found;
  for (const auto& [status, functions] : FunctionRows()) {
    std::istringstream names(functions);
    for (std::string name; names >> name;) EXPECT_TRUE(found.emplace(status, name).second) << name << status;
  }
  return found;
}

TEST(StatusTextsOfFunctions, StandForEachFunctionAndStatusOnce) {
  EXPECT_GT(FunctionRows().size(), 30U);
  EXPECT_GT(FunctionStatuses().size(), 100U);
}

TEST(StatusTextsOfFunctions, NameOnlyWhatTheLibraryExports) {
  std::istringstream lines(ReadFile(fs::path(GWQ_TABLES) / "c_functions.txt"));
  std::set<std::string> exported;
  for (std::string name; std::getline(lines, name);) exported.insert(name);
  for (const auto& [status, name] : FunctionStatuses()) EXPECT_TRUE(exported.contains(name)) << name;
}

TEST(StatusTextsOfFunctions, AreSentencesThatTellMoreThanTheGeneralOnes) {
  for (const auto& [status, name] : FunctionStatuses()) {
    for (const int language : {GWQ_ENGLISH, GWQ_CHINESE}) {
      const std::string stop = language == GWQ_CHINESE ? "。" : ".";
      const std::string cause = GwqStatusCauseOf(name.c_str(), status, language);
      EXPECT_TRUE(IsSentence(cause, stop)) << cause;
      EXPECT_NE(cause, GwqStatusCause(status, language)) << name;
      EXPECT_TRUE(IsSentence(GwqStatusRemedyOf(name.c_str(), status, language), stop)) << name;
    }
  }
}

TEST(StatusTextsOfFunctions, AreTheSameInC) {
  for (const auto& [status, name] : FunctionStatuses()) {
    for (const int language : {GWQ_ENGLISH, GWQ_CHINESE}) {
      EXPECT_STREQ(CauseInC(name.c_str(), status, language),
                   GwqStatusCauseOf(name.c_str(), status, language));
      EXPECT_STREQ(RemedyInC(name.c_str(), status, language),
                   GwqStatusRemedyOf(name.c_str(), status, language));
    }
  }
}

TEST(StatusTextsOfFunctions, TellTheEverydayCauses) {
  const auto says = [](const char* function, int status, const char* words) {
    const std::string cause = GwqStatusCauseOf(function, status, GWQ_ENGLISH);
    EXPECT_NE(cause.find(words), std::string::npos) << function << ": " << cause;
  };
  says("PN_DownloadPinPadWK", GWQ_BAD_FRAME, "pad refused the key");
  says("MP_SignPDF", GWQ_NO_ANSWER, "customer did not sign in time");
  says("MP_ConfirmPDF", GWQ_NO_ANSWER, "customer did not decide in time");
  says("MP_CheckOut_All", GWQ_NO_ANSWER, "customer did not answer the checkout in time");
  says("PN_GetPin", GWQ_READ_FAILED, "customer's time for the PIN ran out");
  says("GWQ_StartKeyboard", GWQ_READ_FAILED, "customer's time ran out");
  says("MP_SignPDF_Voice", GWQ_REFUSED, "written to the host's files");
  says("MP_CheckOut_All", GWQ_CANCELLED, "customer or the program cancelled");
  says("MP_DownloadFile", GWQ_NO_FILE, "has no \"/\"");
}

TEST(StatusTextsOfFunctions, AreTheGeneralOnesWhereNothingMoreIsKnown) {
  for (const char* function :
       {static_cast<const char*>(nullptr), "", " ", "MP_Sign", "SignPDF", "MP_SignPDF ", "min",
        "MP_SignPDF MP_SignPDF_Voice MP_Sign_With_TZG MP_ConfirmPDF"}) {
    for (const int status : {-2, -3, -999, 0, 7}) {
      EXPECT_STREQ(GwqStatusCauseOf(function, status, GWQ_ENGLISH), GwqStatusCause(status, GWQ_ENGLISH));
      EXPECT_STREQ(GwqStatusRemedyOf(function, status, GWQ_CHINESE), GwqStatusRemedy(status, GWQ_CHINESE));
    }
  }
  EXPECT_STREQ(GwqStatusRemedyOf("PN_GetInNo", GWQ_BAD_ARGUMENT, GWQ_ENGLISH),
               GwqStatusRemedy(GWQ_BAD_ARGUMENT, GWQ_ENGLISH));
}

TEST(StatusTexts, NameTheEverydayCausesFirst) {
  EXPECT_EQ(std::string(GwqStatusCause(GWQ_NO_ANSWER, GWQ_ENGLISH)).find("The customer's time ran out, or"),
            0U);
  EXPECT_EQ(std::string(GwqStatusCause(GWQ_NO_ANSWER, GWQ_CHINESE)).find("客户操作超时，或"), 0U);
  const auto has = [](int status, const char* english, const char* chinese) {
    EXPECT_NE(std::string(GwqStatusCause(status, GWQ_ENGLISH)).find(english), std::string::npos);
    EXPECT_NE(std::string(GwqStatusCause(status, GWQ_CHINESE)).find(chinese), std::string::npos);
  };
  has(GWQ_NOT_OPENED, "another program holds it", "被其他程序占用");
  has(GWQ_BAD_FRAME, "refused a key", "拒绝了密钥");
  has(GWQ_REFUSED, "a file on the host could not be written", "主机文件无法写入");
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
