// SPDX-License-Identifier: MIT
// Reads mangled function names: good, bad and hostile ones.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "stack.h"

// Functions whose names the compiler makes.  They are exported, so that the
// loader knows them.  Each name has every compound type only once, because
// later mentions are abbreviated.
struct Plain {
  void change(int) {}
  static int count(const Plain&) { return 0; }
};
void noArguments() {}
void builtIns(signed char, bool, char, double, long double, float, unsigned char, int, unsigned int,
              long, unsigned long, short, unsigned short, wchar_t, long long, unsigned long long) {}
void variadic(int, ...) {}
void pointers(int*, const char*, char* const*, volatile short&, const volatile long*) {}
void named(const Plain&) {}
void byValue(Plain, int) {}
void restricted(char* __restrict*, int) {}
namespace outer {
void direct(double) {}
namespace inner {
void nested(const char*, double**) {}
}  // namespace inner
}  // namespace outer

namespace {

// `long double` has another letter where it has 128 bits.
#ifdef __LONG_DOUBLE_128__
constexpr const char* BUILT_INS = "8builtInsabcdgfhijlmstwxy";
constexpr const char* OF_LETTER_G = "f(long double)";
#else
constexpr const char* BUILT_INS = "8builtInsabcdefhijlmstwxy";
constexpr const char* OF_LETTER_G = "f(__float128)";
#endif

// The mangled name of an exported function, without its "_Z".
template <class Function>
std::string mangledName(Function* function) {
  Dl_info info = {};
  if (dladdr(reinterpret_cast<void*>(function), &info) == 0 || info.dli_sname == nullptr)
    return "not exported";
  return std::strncmp(info.dli_sname, "_Z", 2) == 0 ? info.dli_sname + 2 : info.dli_sname;
}

// A demangled name, read from an array whose end the sanitizers know.
std::string read(std::string_view mangled) {
  const std::vector<char> copy(mangled.begin(), mangled.end());
  return demangle(std::string_view(copy.data(), copy.size()));
}

TEST(demangle, ReadsTheNamesThatTheCompilerMakes) {
  void (Plain::*const change)(int) = &Plain::change;
  Plain object;
  (object.*change)(1);  // keeps it in the program
  const struct {
    std::string mangled;
    const char* expectedMangled;
    const char* expected;
  } cases[] = {
      {mangledName(noArguments), "11noArgumentsv", "noArguments(void)"},
      {mangledName(builtIns), BUILT_INS,
       "builtIns(signed char, bool, char, double, long double, float, unsigned char, int, "
       "unsigned int, long, unsigned long, short, unsigned short, wchar_t, long long, "
       "unsigned long long)"},
      {mangledName(variadic), "8variadiciz", "variadic(int, ...)"},
      {mangledName(pointers), "8pointersPiPKcPKPcRVsPVKl",
       "pointers(int*, const char*, const char**, volatile short&, volatile const long*)"},
      {mangledName(named), "5namedRK5Plain", "named(const Plain&)"},
      {mangledName(byValue), "7byValue5Plaini", "byValue(Plain, int)"},
      {mangledName(outer::direct), "N5outer6directEd", "outer::direct(double)"},
      {mangledName(outer::inner::nested), "N5outer5inner6nestedEPKcPPd",
       "outer::inner::nested(const char*, double**)"},
      {mangledName(restricted), "10restrictedPrPci", "restricted(???CV='r'???char**, int)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(c.mangled, c.expectedMangled) << "the compiler's own name";
    EXPECT_EQ(read(c.expectedMangled), c.expected);
  }
}

TEST(demangle, KnowsEveryBuiltInLetter) {
  const struct {
    char letter;
    const char* expected;
  } cases[] = {
      {'a', "f(signed char)"}, {'b', "f(bool)"},
      {'c', "f(char)"},        {'d', "f(double)"},
      {'e', "f(long double)"}, {'f', "f(float)"},
      {'g', OF_LETTER_G},      {'h', "f(unsigned char)"},
      {'i', "f(int)"},         {'j', "f(unsigned int)"},
      {'l', "f(long)"},        {'m', "f(unsigned long)"},
      {'n', "f(__int128)"},    {'o', "f(unsigned __int128)"},
      {'s', "f(short)"},       {'t', "f(unsigned short)"},
      {'v', "f(void)"},        {'w', "f(wchar_t)"},
      {'x', "f(long long)"},   {'y', "f(unsigned long long)"},
      {'z', "f(...)"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(read(std::string("1f") + c.letter), c.expected);
    EXPECT_EQ(read(std::string("1fi") + c.letter), "f(int, " + std::string(c.expected).substr(2));
  }
}

TEST(demangle, TakesNoOtherLetterForABuiltIn) {
  const char* const names[] = {"char", "bool",  "double", "float", "int",
                               "long", "short", "void",   "...",   "wchar_t"};
  for (const char letter : {'k', 'p', 'q', 'u', 'A', 'B', 'C', 'Z'}) {
    const std::string result = read(std::string("1f") + letter);
    SCOPED_TRACE(letter);
    EXPECT_TRUE(result.starts_with("f(")) << result;
    EXPECT_TRUE(result.ends_with(")")) << result;
    for (const char* name : names) EXPECT_EQ(result.find(name), std::string::npos) << result;
  }
}

TEST(demangle, ReadsArguments) {
  const struct {
    const char* mangled;
    const char* expected;
  } cases[] = {
      {"3foov", "foo(void)"},
      {"3fooic", "foo(int, char)"},
      {"3fooPi", "foo(int*)"},
      {"3fooRi", "foo(int&)"},
      {"3fooPPPc", "foo(char***)"},
      {"3fooRPc", "foo(char*&)"},
      {"3fooKi", "foo(const int)"},
      {"3fooVi", "foo(volatile int)"},
      {"3fooVKi", "foo(volatile const int)"},
      {"3fooPKc", "foo(const char*)"},
      {"3fooKPc", "foo(const char*)"},
      {"3fooRKPKc", "foo(const const char*&)"},
      {"3foo3Bar", "foo(Bar)"},
      {"3fooPK3Barx", "foo(const Bar*, long long)"},
      {"3foo1A2BBP3CCC", "foo(A, BB, CCC*)"},
      {"3foo12twelve_bytesi", "foo(twelve_bytes, int)"},
      {"3fooSs", "foo(std::string)"},
      {"3fooRKSsi", "foo(const std::string&, int)"},
      {"3fooPSsSs", "foo(std::string*, std::string)"},
      {"3fooSt9exceptioni", "foo(std::exception, int)"},
      // More than 2 to the power of 64: the name has all the rest.
      {"3foo18446744073709551617Bar", "foo(Bar)"},
  };
  for (const auto& c : cases) EXPECT_EQ(read(c.mangled), c.expected) << c.mangled;
}

TEST(demangle, ReadsFunctionNames) {
  const struct {
    const char* mangled;
    const char* expected;
  } cases[] = {
      {"1ai", "a(int)"},
      {"10abcdefghiji", "abcdefghij(int)"},
      {"3_Z1i", "_Z1(int)"},
      {"N1aEi", "a(int)"},
      {"N3foo3barEv", "foo::bar(void)"},
      {"N1a1b1c1dE1e", "a::b::c::d(e)"},
      {"N3foo3barEiPKc", "foo::bar(int, const char*)"},
      // Only the length says how much belongs to the name.
      {"5iiiiii", "iiiii(int)"},
      {"N2EE2NNEi", "EE::NN(int)"},
  };
  for (const auto& c : cases) EXPECT_EQ(read(c.mangled), c.expected) << c.mangled;
}

TEST(demangle, ReadsTheQualifiersOfANestedName) {
  EXPECT_EQ(read("NK5Plain3getEv"), "const Plain::get(void)");
  EXPECT_EQ(read("NV5Plain3getEv"), "volatile Plain::get(void)");
  EXPECT_EQ(read("NVK5Plain3getEv"), "volatile const Plain::get(void)");
  EXPECT_EQ(read("Nr5Plain3getEv"), "???CV='r'???Plain::get(void)");
}

TEST(demangle, ReadsTemplateArguments) {
  EXPECT_EQ(read("3foo6vectorIiE"), "foo(vector<int>)");
  EXPECT_EQ(read("3foo3mapIiPKcEd"), "foo(map<int, const char*>, double)");
  EXPECT_EQ(read("3fooIiE"), "foo(<int>)");
  EXPECT_EQ(read("N3setIiE4findEc"), "set<int>::find(char)");
}

TEST(demangle, MarksARestrictQualifier) {
  EXPECT_EQ(read("3fooPrPc"), "foo(???CV='r'???char**)");
  EXPECT_EQ(read("3fooPrKci"), "foo(???CV='r'???const char*, int)");
  EXPECT_EQ(read("3foori"), "foo(???CV='r'???int)");
  EXPECT_EQ(read("3foo3BoxIPriE"), "foo(Box<???CV='r'???int*>)");
  // With nothing after it.
  EXPECT_TRUE(read("3foobar").starts_with("foo(bool, signed char, ???CV='r'???"))
      << read("3foobar");
}

TEST(demangle, MarksANestedNameThatDoesNotEnd) {
  EXPECT_EQ(read("N3foo3bar"),
            "foo::bar???NN???"
            "()");
  // The character at the place of the "E" is skipped.
  EXPECT_EQ(read("N3foo3barX"),
            "foo::bar???NN???"
            "()");
  EXPECT_EQ(read("N3foo3barXic"),
            "foo::bar???NN???"
            "(int, char)");
  EXPECT_EQ(read("N5PlainC1Ev"),
            "Plain???NN???"
            "(E, void)");
}

TEST(demangle, SurvivesNamesThatAreCutShort) {
  const char* const names[] = {"8builtInsabcdefhijlmstwxy",
                               "8pointersPiPKcPKPcRVsPVKlO5Plain",
                               "N5outer5inner6nestedEPKcPPd",
                               "NK5Plain3getEv",
                               "10restrictedPrPci",
                               "3foo6vectorISsSaISsEERKSs",
                               "5named5PlainRKS_",
                               "St4moveIRSsENSt16remove_referenceIT_E4typeEOS2_",
                               "N12_GLOBAL__N_13fooEPFvPvES0_"};
  for (const std::string name : names) {
    for (std::size_t size = 0; size <= name.size(); size++) {
      const std::string part = name.substr(0, size);
      const std::string result = read(part);
      SCOPED_TRACE(part + " gives " + result);
      // Every byte gives a bounded piece of text: the longest are the markers
      // and "unsigned long long".
      EXPECT_LE(result.size(), 2 + 24 * (size + 1));
      EXPECT_EQ(result, read(part)) << "the same each time";
    }
  }
}

TEST(demangle, DoesNotTrustALength) {
  for (const char* mangled :
       {"9foo", "99foo", "4294967299foo", "18446744073709551619foo", "2147483648foo", "-3foo",
        "00foo", "0", "99999999999999999999999999999999999999999", "N9fooE", "N3foo4294967299barE",
        "3foo9Ba", "3foo4294967299Bar"}) {
    const std::string result = read(mangled);
    EXPECT_LE(result.size(), 2 + 24 * (std::strlen(mangled) + 1)) << mangled;
    EXPECT_EQ(result.find('\0'), std::string::npos) << mangled;
  }
}

TEST(demangle, SurvivesAnyBytes) {
  const std::string_view letters("0123456789NEKVrPRISsTOabcivxz_F\0\xff+", 34);
  std::mt19937 random(20261115);
  for (int round = 0; round < 20000; round++) {
    std::string mangled(random() % 24, '\0');
    for (char& c : mangled)
      c = round % 4 == 0 ? static_cast<char>(static_cast<unsigned char>(random() & 0xff))
                         : letters[random() % letters.size()];
    const std::string result = read(mangled);
    ASSERT_LE(result.size(), 2 + 24 * (mangled.size() + 1)) << "for " << mangled;
  }
}

TEST(demangle, ReadsFiftyPointersToPointers) {
  EXPECT_EQ(read("1f" + std::string(50, 'P') + "i"), "f(int" + std::string(50, '*') + ")");
}

TEST(demangle, SurvivesDeepNesting) {
  const std::size_t depth = 100000;
  for (const char* piece : {"P", "K", "r", "I", "R", "N", "PK", "3fooI", "N1a"}) {
    SCOPED_TRACE(piece);
    std::string mangled;
    while (mangled.size() < depth) mangled += piece;
    EXPECT_LE(read("1f" + mangled).size(), 2 + 24 * (mangled.size() + 3));
    EXPECT_LE(read(mangled).size(), 2 + 24 * (mangled.size() + 1));
  }
}

TEST(demangle, GivesTheExampleOfItsContract) {
  EXPECT_EQ(demangle("N3foo3barEiPKc"), "foo::bar(int, const char*)");
}

}  // namespace
