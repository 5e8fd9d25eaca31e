// What is there before `main`, in programs that are linked in different ways: see
// CMakeLists.txt beside this file.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>

namespace {

constexpr const char* FLAGS =
    "configDB 0\n"
    "refcount 0\n"
    "reportStack 0\n"
    "reportThread 0\n"
    "in main: 4\n";
constexpr const char* ITEMS =
    "defaultLanguage English\n"
    "LogDateFormat [%f %i %d %H:%M:%S %Y] \n"
    "LogTimeZone localtime\n"
    "MaxShortName 16\n"
    "PROGRAMS VNC=vncviewer\n"
    "URI_SCHEME VNC\n"
    "VNC_OPTIONS -autoreconnect=0\n"
    "in main: 7\n";
constexpr const char* DATABASE =
    "defaultLanguage\n"
    "LogDateFormat\n"
    "LogTimeZone\n"
    "MaxShortName\n"
    "PROGRAMS\n"
    "URI_SCHEME\n"
    "VNC_OPTIONS\n";

std::string outputOf(const std::string& program) {
  std::string result;
  std::FILE* const pipe = popen((PROGRAMS_FOLDER "/startup_" + program + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return "no pipe";
  std::array<char, 4096> piece;
  while (std::fgets(piece.data(), piece.size(), pipe) != nullptr) result += piece.data();
  if (pclose(pipe) != 0) result += "failed\n";
  return result;
}

TEST(StartUpOrder, AProgramThatUsesFlagsHasAllFlags) {
  EXPECT_EQ(FLAGS, outputOf("flags"));
}

TEST(StartUpOrder, AProgramThatUsesItemsHasAllItems) {
  EXPECT_EQ(ITEMS, outputOf("items"));
}

TEST(StartUpOrder, AProgramThatUsesLocalisedStringsHasAllItems) {
  EXPECT_EQ(DATABASE, outputOf("database"));
}

TEST(StartUpOrder, TheObjectsOfTheLibraryMayBeLinkedInAnyOrder) {
  for (const char* const order : {"123", "132", "213", "231", "312", "321"}) {
    SCOPED_TRACE(order);
    EXPECT_EQ(FLAGS, outputOf(std::string("flags_") + order));
    EXPECT_EQ(ITEMS, outputOf(std::string("items_") + order));
    EXPECT_EQ(DATABASE, outputOf(std::string("database_") + order));
  }
}

#ifdef HAS_SHARED
TEST(StartUpOrder, TheSharedLibraryBringsAllFlagsAndItems) {
  EXPECT_EQ(FLAGS, outputOf("flags_shared"));
  EXPECT_EQ(ITEMS, outputOf("items_shared"));
  EXPECT_EQ(DATABASE, outputOf("database_shared"));
}
#endif

}  // namespace
