// The registry is complete, and docs/functions.md lists what it holds.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tests/registry/calls.h"

namespace {

namespace fs = std::filesystem;
using Declarations = std::map<std::string, std::vector<std::string>>;  // by header

std::string Read(const fs::path& path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

// The functions that the public headers declare, as Call::Declaration spells them.
Declarations Declared() {
  Declarations all;
  const std::regex comment("//[^\n]*"), space("\\s+"), value(" = [^,)]*"),
      function("KY_API ([\\w ]+\\w\\*?) (\\w+ ?\\((?:[^;{}]*)\\)) noexcept;"),
      other("(class|struct|define) KY_API");
  for (const auto& entry : fs::directory_iterator(fs::path(KY_SOURCE) / "include/ky")) {
    std::string text = std::regex_replace(Read(entry.path()), comment, "");
    text = std::regex_replace(text, space, " ");
    text = std::regex_replace(text, other, "");
    std::size_t functions = 0;
    for (std::sregex_iterator i(text.begin(), text.end(), function), end; i != end;
         ++i, ++functions)
      all[entry.path().filename()].push_back(
          std::regex_replace((*i)[1].str() + " " + (*i)[2].str(), value, ""));
    std::size_t exported = 0;
    for (std::size_t at = 0; (at = text.find("KY_API", at)) != text.npos; ++at) ++exported;
    EXPECT_EQ(functions, exported) << entry.path() << " has a declaration that the list overlooks";
  }
  return all;
}

// Whether the header is that of an optional library that this build leaves out.
bool IsLeftOut(const std::string& header) {
#ifndef KY_HAS_FREQUENCY
  if (header == "frequency.h") return true;
#endif
#ifndef KY_HAS_DRAWING
  if (header == "drawing.h") return true;
#endif
#ifndef KY_HAS_FILES
  if (header == "files.h") return true;
#endif
  return header.empty();
}

TEST(List, EveryFunctionIsRegistered) {
  std::multiset<std::string> declared, registered;
  for (const auto& [header, functions] : Declared())
    if (!IsLeftOut(header)) declared.insert(functions.begin(), functions.end());
  for (const ky::test::Call& call : ky::test::Registry())
    if (call.name.find("::") == call.name.npos) registered.insert(call.Declaration());
  std::vector<std::string> missing, unknown;
  std::ranges::set_difference(declared, registered, std::back_inserter(missing));
  std::ranges::set_difference(registered, declared, std::back_inserter(unknown));
  EXPECT_EQ(missing, std::vector<std::string>()) << "tests/registry/ lacks these";
  EXPECT_EQ(unknown, std::vector<std::string>()) << "no public header declares these so";
  EXPECT_GT(declared.size(), 100u);
}

// Member functions that work on ROIs are found in the libraries, as a header does not mark them.
TEST(List, EveryMethodIsRegistered) {
  std::multiset<std::string> exported, registered;
  const std::string command = "nm -DC --defined-only " KY_LIBRARIES;
  FILE* const symbols = popen(command.c_str(), "r");
  ASSERT_NE(symbols, nullptr);
  const std::regex method("[0-9a-f]+ [TW] (\\w+)::(\\w+)\\(.*KyROI<.*\n?");
  char line[4096];
  for (std::cmatch match; std::fgets(line, sizeof line, symbols) != nullptr;)
    if (std::regex_match(line, match, method) && match[1] != match[2])
      exported.insert(match[1].str() + "::" + match[2].str());
  EXPECT_EQ(pclose(symbols), 0);
  for (const ky::test::Call& call : ky::test::Registry())
    if (call.name.find("::") != call.name.npos &&
        call.Declaration().find("KyROI<") != std::string::npos)
      registered.insert(call.name);
  exported.erase("KyMovingAverage::Take");  // private
  EXPECT_FALSE(exported.empty());
  EXPECT_EQ(exported, registered);
}

// KY_WRITE_LIST=1 in the environment writes the page instead.
TEST(List, PageIsUpToDate) {
  std::stringstream page;
  page << "# Functions\n\nEvery function that the libraries export, by header. Default values of "
          "parameters stand in the headers.\nThis page is generated: `KY_WRITE_LIST=1 ./dev test "
          "-R calls.List` writes it.\n";
  for (const auto& [header, functions] : Declared()) {
    page << "\n## `ky/" << header << "`\n\n```cpp\n";
    for (const std::string& function : functions) page << function << ";\n";
    page << "```\n";
  }
  const fs::path path = fs::path(KY_SOURCE) / "docs/functions.md";
  if (std::getenv("KY_WRITE_LIST") != nullptr) std::ofstream(path) << page.str();
  EXPECT_TRUE(Read(path) == page.str()) << "write docs/functions.md anew: see its head";
}

}  // namespace
