// SPDX-License-Identifier: MIT
// What a stranger's link cannot do.  Every argument that arrives is the template with
// checked pieces of the link, each in its place.
//
// The links consist of parts that try attacks, and some have a changed byte.  They are the
// same in every run.  This test has its own rules for pieces, and it reads the links by
// other means than the program.

#include <random>
#include <regex>

#include "hopopen_runner.h"

namespace hopopen_security_test {

namespace {

using door::Machine;
using door::Outcome;
using door::Strings;

// Words in capitals are between the places, so that a test can see which piece is where.
const char* const EVERYTHING = R"(name = "Everything"
schemes = ["vnc", "ssh"]
programs = ["everything"]
stranger = ["STRANGER", "{host}", ["USER", "{user}"]]
trusted = ["TRUSTED"]
arguments = ["REST", "{bracketed}", ["PORT", "{port}"], ["LINK", "{link}"], "--to={host}:{port}"]
[environment]
DOOR_USER = "{user}"
DOOR_PASSWORD = "{password}"
[parameters.QualityLevel]
allow = "[0-9]{1,2}"
arguments = [["QUALITY", "{value}"]]
[parameters.ConnectionName]
allow = "[a-z .]+"
arguments = [["NAME", "{value}"]]
[parameters.ViewOnly]
arguments = ["VIEWONLY"]
)";

class Strange {
 public:
  explicit Strange(unsigned seed) : m_random(seed) {}

  std::string link() {
    std::string result = scheme() + user() + host() + port() + path() + query() + fragment();
    if (m_random() % 8 == 0) {
      change(result);
    }
    return result;
  }

 private:
  std::string one(const Strings& parts) { return parts[m_random() % parts.size()]; }
  std::string mostly(const Strings& good, const Strings& nasty) {
    return one(m_random() % 8 == 0 ? nasty : good);
  }

  std::string scheme() {
    return mostly({"vnc://", "ssh://", "VNC://", "Ssh://"},
                  {"vnc+ssh://", "-vnc://", "v%6Ec://", "vnc:/", "vnc:", "vnc:///", "://"});
  }
  std::string user() {
    const std::string longest(64, 'u');
    return mostly(
        {"", "", "u@", "User.1@", "u:p@", "dom%5Cu@", "a%40b@", ":p@", "@", ":@", "_@", "u:-p@",
         "u:%C3%A4@", "USER@", longest + "@", "%75:%24%28id%29@", "u:%27%22@"},
        {"-x@", "%2dx@", "%2Dx:p@", "a%20b@", "u:p%0a@", "u:%00@", "u;x=y@", "u;x=y,z=w:p@", "../@",
         "u:a:b@", "a@b@", "$(id)@", "%24%28id%29@", "u%0A-x@", "--@", longest + "u@"});
  }
  std::string host() {
    const std::string longest(63, 'h');
    return mostly(
        {"h", "Host.Example", "h.", "_h", "127.0.0.1", "[::1]", "[FE80::1%25eth0]", "h.%65xample",
         "xn--a", longest, "[::ffff:1.2.3.4]", "rest", "0x", "1.h", "%5Fh", "a-b.c-d"},
        {"h-",         "-h",          "%2dh",     "%2Dh",       "h%2e-x",     "a..b",
         "127.1",      "0x7f.1",      "1.2.3.4.", "2130706433", "[::1%25-x]", "[::1",
         "[::1]x",     "[::1%25a;b]", "[v1.x]",   "%5B::1]",    "$(id)",      "`id`",
         "h;id",       "h|id",        "h%0aid",   "h%20-x",     "h,evil",     "h+evil",
         "h%00",       "evil%40good", "a\\b",     "*",          "",           "%",
         "%2",         "%zz",         "..",       "--help",     "h%2F..",     "\xC3\xA4",
         "h\nx",       "h\tx",        " h",       "h\x1B[1m",   "a.-b",       "a-.b",
         longest + "h"});
  }
  std::string port() {
    return mostly({"", "", ":", ":5900", ":22", ":65535", ":1"},
                  {":0", ":65536", ":05", ":-1", ":+1", ":5900x", ":%31", ":1:2", ":1e3", ":0x10",
                   ":99999999999999999999"});
  }
  std::string path() {
    return mostly({"", "/"}, {"//", "/..", "/-x", "/%2e", "/etc/passwd", "\\"});
  }
  std::string query() {
    std::string result = one({"", "?", "?"});
    for (std::size_t left = result.empty() ? 0 : m_random() % 4; left > 0; --left) {
      result +=
          mostly({"QualityLevel=7",
                  "QualityLevel=-x",
                  "qualitylevel=7",
                  "QualityLevel=%37",
                  "QualityLevel=100",
                  "QualityLevel",
                  "ConnectionName=a%20b",
                  "ConnectionName=-x",
                  "ConnectionName=$(id)",
                  "ConnectionName=%60id%60",
                  "ConnectionName=.",
                  "ConnectionName=-%20help",
                  "ViewOnly=yes",
                  "VncUsername=u",
                  "VncPassword=p",
                  "Shared=1;id",
                  "program=/bin/sh",
                  "PROGRAMS=VNC=sh",
                  "a=b",
                  "%41=b",
                  "via=id",
                  "SecurityType=1"},
                 {"QualityLevel=7%0a", "ConnectionName=a%00", "ViewOnly=no", "ViewOnly=maybe",
                  "VncUsername=-x", "VncPassword=%0a", "-x=y", "--=--", "a=c", "%2dx=y", "="}) +
          one({"&", "&", "&&"});
    }
    return result;
  }
  std::string fragment() { return mostly({"", "", "#", "#x", "#-x"}, {"#%0a", "#a#b", "#%"}); }
  void change(std::string& text) {
    const std::size_t at = m_random() % (text.size() + 1);
    const char byte = static_cast<char>(1 + m_random() % 255);
    switch (m_random() % 3) {
      case 0:
        text.insert(at, 1, byte);
        break;
      case 1:
        text.erase(at, 1);
        break;
      default:
        if (at < text.size()) {
          text[at] = byte;
        }
    }
  }

  std::mt19937 m_random;
};

std::string decoded(const std::string& text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '%' && at + 2 < text.size()) {
      result += static_cast<char>(std::stoi(text.substr(at + 1, 2), nullptr, 16));
      at += 2;
    } else {
      result += text[at];
    }
  }
  return result;
}

std::string lower(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  }
  return text;
}

// The pieces of an accepted link.
struct Pieces {
  std::string scheme, user, host, port;
  bool address = false;  // of version 6
};

Pieces piecesOf(const std::string& link) {
  Pieces result;
  static const std::regex form(
      "([^:]*)://(?:([^@/?#]*)@)?(\\[[^\\]]*\\]|[^:/?#]*)(?::([^/?#]*))?/?"
      "(?:[?#][^]*)?");
  std::smatch found;
  if (!std::regex_match(link, found, form)) {
    ADD_FAILURE() << "not of the form of a link: " << link;
    return result;
  }
  result.scheme = lower(found[1]);
  result.user = found[2];
  result.user = result.user.substr(0, result.user.find(':'));
  if (result.scheme == "ssh") {
    result.user = result.user.substr(0, result.user.find(';'));
  }
  result.user = decoded(result.user);
  result.host = found[3];
  result.port = found[4];
  result.address = result.host.starts_with("[");
  if (result.address) {
    result.host =
        std::regex_replace(result.host.substr(1, result.host.size() - 2), std::regex("%25"), "%");
  } else {
    result.host = lower(decoded(result.host));
    if (result.host.ends_with(".")) {
      result.host.pop_back();
    }
  }
  return result;
}

bool is(const std::string& text, const char* expression) {
  return std::regex_match(text, std::regex(expression));
}

// The arguments that arrived, word by word.
class Arrived {
 public:
  explicit Arrived(const Strings& words) : m_words(words) {}

  std::string next() {
    if (m_at >= m_words.size()) {
      ADD_FAILURE() << "an argument is missing";
      return {};
    }
    return m_words[m_at++];
  }
  // Takes the word, if it is the next one.
  bool take(const std::string& word) {
    const bool result = m_at < m_words.size() && m_words[m_at] == word;
    m_at += result ? 1 : 0;
    return result;
  }
  bool atEnd() const { return m_at == m_words.size(); }

 private:
  Strings m_words;
  std::size_t m_at = 0;
};

void checkHost(const std::string& host, const Pieces& pieces) {
  EXPECT_EQ(pieces.host, host);
  if (pieces.address) {
    EXPECT_TRUE(is(host, "[0-9A-Fa-f:.]{2,45}(%[A-Za-z0-9_.-]{1,15})?")) << host;
  } else {
    EXPECT_TRUE(is(host,
                   "([a-z0-9_]([a-z0-9_-]{0,61}[a-z0-9_])?)"
                   "(\\.[a-z0-9_]([a-z0-9_-]{0,61}[a-z0-9_])?)*"))
        << host;
    EXPECT_GE(253U, host.size());
  }
}

// The user that a link for vnc has among its parameters.
std::string userOfQuery(const std::string& link) {
  static const std::regex form("vnc:[^?#]*\\?(?:[^#]*&)?VncUsername=([^&#]*)[^]*",
                               std::regex::icase);
  std::smatch found;
  return std::regex_match(link, found, form) ? decoded(found[1]) : "";
}

void checkArguments(const Strings& arguments, const std::string& link) {
  Pieces pieces = piecesOf(link);
  if (pieces.user.empty()) {
    pieces.user = userOfQuery(link);
  }
  const std::string bracketed = pieces.address ? "[" + pieces.host + "]" : pieces.host;
  Arrived words(arguments);
  EXPECT_EQ("everything", words.next());
  EXPECT_EQ("STRANGER", words.next());
  checkHost(words.next(), pieces);
  if (words.take("USER")) {
    const std::string user = words.next();
    EXPECT_EQ(pieces.user, user);
    EXPECT_TRUE(is(user, "[A-Za-z0-9_][A-Za-z0-9_.@\\\\-]{0,63}")) << user;
  } else {
    EXPECT_EQ("", pieces.user);
  }
  for (;;) {
    if (words.take("QUALITY")) {
      EXPECT_TRUE(is(words.next(), "[0-9]{1,2}"));
    } else if (words.take("NAME")) {
      EXPECT_TRUE(is(words.next(), "[a-z .]+"));
    } else if (!words.take("VIEWONLY")) {
      break;
    }
  }
  EXPECT_EQ("REST", words.next());
  EXPECT_EQ(bracketed, words.next());
  if (words.take("PORT")) {
    const std::string port = words.next();
    EXPECT_EQ(pieces.port, port);
    EXPECT_TRUE(is(port, "[1-9][0-9]{0,4}")) << port;
  } else {
    EXPECT_EQ("", pieces.port);
  }
  EXPECT_EQ("LINK", words.next());
  EXPECT_TRUE(is(words.next(),
                 "(vnc|ssh)://([A-Za-z0-9._~-]|%[0-9A-F]{2})*@?"
                 "([a-z0-9_.-]+|\\[[0-9A-Fa-f:.]+(%25[A-Za-z0-9_.-]+)?\\])"
                 "(:[1-9][0-9]*)?"));
  if (!pieces.port.empty()) {
    EXPECT_EQ("--to=" + pieces.host + ":" + pieces.port, words.next());
  }
  EXPECT_TRUE(words.atEnd());
}

void checkEnvironment(const Strings& environment) {
  for (const std::string& variable : environment) {
    const std::size_t sign = variable.find('=');
    const std::string name = variable.substr(0, sign);
    const std::string value = variable.substr(sign + 1);
    if (name == "DOOR_USER" || name == "DOOR_PASSWORD") {
      EXPECT_NE("", value) << name;
      EXPECT_GE(255U, value.size()) << name;
      EXPECT_TRUE(std::none_of(value.begin(), value.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
      })) << name;
    } else {
      static const Strings others{"HOME",
                                  "PATH",
                                  "RECORDING",
                                  "XDG_DATA_DIRS",
                                  "XDG_DATA_HOME",
                                  "XDG_CONFIG_DIRS",
                                  "XDG_CONFIG_HOME",
                                  "ASAN_OPTIONS",
                                  "LSAN_OPTIONS",
                                  "UBSAN_OPTIONS"};
      EXPECT_EQ(1, std::count(others.begin(), others.end(), name)) << name;
    }
  }
}

class StrangersLink : public testing::TestWithParam<unsigned> {};

TEST_P(StrangersLink, GetsCheckedPiecesIntoTheirPlacesOnly) {
  const Machine machine;
  machine.define("everything", EVERYTHING);
  machine.program("everything");
  Strange strange(GetParam());
  int accepted = 0;
#ifdef SLOW
  constexpr int LINKS = 100;  // each takes long
#else
  constexpr int LINKS = 500;
#endif
  for (int count = 0; count < LINKS; ++count) {
    const std::string link = strange.link();
    SCOPED_TRACE(link);
    const Outcome outcome = machine.run({"--", link});
    EXPECT_EQ("", outcome.out);
    if (outcome.viewer) {
      ++accepted;
      EXPECT_EQ(42, outcome.status);
      EXPECT_EQ("", outcome.err);
      EXPECT_EQ(machine.path("bin/everything"), outcome.viewer->path);
      checkArguments(outcome.viewer->arguments, link);
      checkEnvironment(outcome.viewer->environment);
    } else {
      EXPECT_EQ(2, outcome.status);
      EXPECT_TRUE(door::isPlain(outcome.err)) << outcome.err;
      EXPECT_TRUE(outcome.err.starts_with("hopopen: ")) << outcome.err;
      EXPECT_EQ(1U, countOf(outcome.err, "\n")) << outcome.err;
    }
    if (HasFailure()) {
      break;
    }
  }
  EXPECT_LT(LINKS / 5, accepted) << "too few to show anything";
  EXPECT_TRUE(std::filesystem::is_empty(machine.path("work")));
}

INSTANTIATE_TEST_SUITE_P(Random, StrangersLink, testing::Range(1U, 7U));

TEST(StrangersWords, NeverBeginWithADash) {
  const Machine machine;
  machine.define("bare",
                 "name = \"Bare\"\nschemes = [\"vnc\", \"ssh\"]\nprograms = [\"bare\"]\n"
                 "arguments = [\"{user}\", \"{host}\", \"{bracketed}\", \"{link}\"]\n"
                 "[default]\nport = 5900\n");
  machine.program("bare");
  for (const char* link : {"vnc://-oProxyCommand=id", "vnc://%2DoProxyCommand=id", "ssh://-x@h",
                           "ssh://%2dx@h", "vnc://-x", "vnc://--help", "vnc://.-x", "vnc://-x.h",
                           "vnc://[-x]", "vnc://h?VncUsername=-x", "-x://h", "ssh://;-x=y@-h",
                           "ssh://-x;a=b@h", "vnc://-", "vnc://%2D%2D"}) {
    const Outcome outcome = machine.run({"--", link});
    EXPECT_EQ(2, outcome.status) << link;
    EXPECT_FALSE(outcome.viewer) << link;
  }
  for (const char* link : {"vnc://u-x@h-x.y-z", "ssh://_-@_-_", "vnc://h?x=-y", "vnc://h#-x"}) {
    const Strings arguments = machine.launch({"--", link});
    for (const std::string& argument : arguments) {
      EXPECT_FALSE(argument.starts_with("-")) << link;
    }
  }
}

}  // namespace

}  // namespace hopopen_security_test
