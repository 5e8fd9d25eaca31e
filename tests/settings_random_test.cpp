// SPDX-License-Identifier: MIT
// Random changes of settings files of odd forms.  After every change the file says what was
// asked for, and every comment and everything that means nothing here is still there.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <ostream>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "settings.h"
#include "settings_edit.h"

namespace settings_random_test {

namespace {

using hopopen::change;
using hopopen::trustedHost;

// Each comment has a word of its own, "#1" and so on, and each key that means nothing has a
// value of its own, "=1" and so on.
const std::vector<std::string> FILES = {
    "",
    "\xEF\xBB\xBF",
    "\xEF\xBB\xBF#1 \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\r\n\r\n[use] #2\r\n",
    "x =1 #1\nuse.a = 'v1' #2\n#3\n\"use\" . \"b+c\" = \"v2\"  #4\ny =2",
    "#1\n[use]#2\n#3\na = \"\"\"\\\n  v1\"\"\" #4\n\t#5\n\n[other]#6\nuse =1 #7\n[more.use] #8\n"
    "a =2 #9",
    "use = { a = 'v1' , b = \"v2\",c='v3' } #1\ntrust = {hosts = ['h1', 'h2'],x =1} #2\n",
    "[trust] #1\nhosts = [ #2\n  #3 'x', y\n  'h1', #4\n  'h2' #5\n  , #6\n  '[::1]' #7\n #8\n]"
    " #9\n",
    "[trust.more] #1\nhosts =1\n[use] #2\n[trust.more.still] #3\nuse =2",
    "[trust.more] #1\nhosts =1\n[trust] #2\n#3\n#4\n[[others]]\ntrust.hosts =2\n[[others]] #5\n",
    "trust.x.y =1 #1\r\nuse.a = 'v1' #2\r\n[t]#3\r\ntrust.hosts =2 # 4\r\n",
    "[trust]\nhosts = ['h1','H1','h2','''\nh2''','h3',]#1\n  [use]#2\n  a   =   'v1'#3\n"
    "  'b+c'='''v2'''#4\n",
    "text = \"\"\"\n[use] #1\na = 'v1'\n\"\"\" #2\n'a\xC3\xA9' =1 #3\ntrust.hosts = [ #4\n"
    "] #5\nuse.a = 'v1'",
    "[a.b]\nx =1 #1\n[a]#2\ny =2 #3\n[trust] #4\nz =3\nnan = nan\nhosts = [\n'h1'\n,'h2'\n,#5\n]",
    "[host.\"H1.\"] #1\nuse = {a = 'v1'} #2\nuser ='x' #3\ntrust = true#4\n\n[host . \".h1\"]#5\n"
    "x =1 #6\n[host.'[::1]'.use]#7\n'b+c' = \"v2\" #8\nb = 'v1'#9\n[trust]\nhosts = ['h1']",
    "host.h2.use.a = 'v1' #1\r\nhost.h2.trust = false #2\r\nhost.h3.x =1 #3\r\n[use] #4\r\n",
    "host = {h1 = {use = {a='v1', b='v2'}, trust=false,x =1}, '.h1' = {}} #1\n[more.host.h1]\nuse "
    "=2",
    "[host] #1\nh1 = {user ='x', y =1} #2\n h2.use.a = 'v1' #3\n[host.h3.more]\nuse "
    "=2\n[host.h3]#4",
};

// Some hosts in several forms, and the form in which the file keeps each.
const std::vector<std::pair<std::string, std::string>> HOSTS = {
    {"h1", "h1"},
    {"H1.", "h1"},
    {"h2", "h2"},
    {"h3", "h3"},
    {".h1", ".h1"},
    {"[::1]", "[::1]"},
    {"10.0.0.1", "10.0.0.1"},
    {"[fe80::1%25a]", "[fe80::1%25a]"},
};
const std::vector<std::string> SCHEMES = {"a", "b", "b+c", "c", "d.e"};
const std::vector<std::string> NAMES = {"v1", "v2", "new-1"};

// What a file says, read without the code under test.
struct Said {
  std::map<std::string, std::string> use = {};
  std::vector<std::string> hosts = {};  // in lower case
  std::map<std::string, std::map<std::string, std::string>> useFor = {};
  std::map<std::string, bool> trustFor = {};

  bool operator==(const Said&) const = default;
};

// The words of the comments and of the values that mean nothing.
std::multiset<std::string> marks(const std::string& text) {
  std::multiset<std::string> result;
  for (std::size_t i = 0; i + 1 < text.size(); i++) {
    if ((text[i] == '#' || text[i] == '=') && text[i + 1] >= '0' && text[i + 1] <= '9') {
      result.insert(text.substr(i, 2));
    }
  }
  return result;
}

Said said(const std::string& text) {
  hopopen::faults found;
  const hopopen::settings read = hopopen::readSettings(text, "f", found);
  EXPECT_TRUE(found.empty()) << found.front().lineOfText() << "\n" << text;
  Said result;
  result.use = read.use;
  for (const trustedHost& host : read.trust) {
    result.hosts.push_back(host.text());
  }
  for (const auto& table : read.hosts) {
    if (!table.use.empty()) {
      result.useFor[table.where.text()] = table.use;
    }
    if (table.trust) {
      result.trustFor[table.where.text()] = *table.trust;
    }
  }
  return result;
}

// Shown where a test fails.
void PrintTo(const Said& what, std::ostream* out) {
  for (const auto& [scheme, viewer] : what.use) {
    *out << scheme << "=" << viewer << " ";
  }
  for (const std::string& host : what.hosts) {
    *out << host << " ";
  }
  for (const auto& [host, use] : what.useFor) {
    for (const auto& [scheme, viewer] : use) {
      *out << host << ":" << scheme << "=" << viewer << " ";
    }
  }
  for (const auto& [host, trust] : what.trustFor) {
    *out << host << (trust ? ":trust " : ":distrust ");
  }
}

#ifdef SLOW
constexpr unsigned SEEDS = 5;  // each takes long
#else
constexpr unsigned SEEDS = 25;
#endif

class Changes {
 public:
  explicit Changes(unsigned seed) : m_random(seed) {}

  // Makes a change, and changes the expected content accordingly.
  change next(Said& into) {
    change result;
    choose(result, into);
    for (unsigned i = below(3); i > 0; i--) {
      const auto& [written, kept] = HOSTS[below(HOSTS.size())];
      result.distrust.push_back(hopopen::readTrusted(written).value());
      std::erase(into.hosts, kept);
      if (into.trustFor.contains(kept)) {
        into.trustFor[kept] = false;
      }
    }
    for (unsigned i = below(3); i > 0; i--) {
      const auto& [written, kept] = HOSTS[below(HOSTS.size())];
      result.trust.push_back(hopopen::readTrusted(written).value());
      if (into.trustFor.contains(kept)) {
        into.trustFor[kept] = true;
      } else if (std::find(into.hosts.begin(), into.hosts.end(), kept) == into.hosts.end()) {
        into.hosts.push_back(kept);
      }
    }
    return result;
  }

 private:
  // Viewers for all hosts, or for some.
  void choose(change& result, Said& into) {
    const auto& [written, kept] = HOSTS[below(HOSTS.size())];
    if (below(2) == 0) {
      result.forHost = hopopen::readTrusted(written);
    }
    std::map<std::string, std::string>& use = result.forHost ? into.useFor[kept] : into.use;
    for (unsigned i = below(3); i > 0; i--) {
      const std::string& scheme = SCHEMES[below(SCHEMES.size())];
      if (below(2) == 0) {
        result.use[scheme] = std::nullopt;
        use.erase(scheme);
      } else {
        const std::string& viewer = NAMES[below(NAMES.size())];
        result.use[scheme] = viewer;
        use[scheme] = viewer;
      }
    }
    if (into.useFor.contains(kept) && into.useFor[kept].empty()) {
      into.useFor.erase(kept);
    }
  }

  unsigned below(std::size_t limit) { return static_cast<unsigned>(m_random() % limit); }

  std::mt19937 m_random;
};

}  // namespace

TEST(RandomChanges, KeepEveryCommentAndEveryUnknownKey) {
  for (std::size_t file = 0; file < FILES.size(); file++) {
    for (unsigned seed = 0; seed < SEEDS; seed++) {
      Changes changes(seed);
      std::string text = FILES[file];
      Said expected = said(text);
      for (int step = 0; step < 20; step++) {
        const change what = changes.next(expected);
        const auto next = hopopen::edited(text, what);
        ASSERT_TRUE(next) << "file " << file << " seed " << seed << "\n" << text;
        ASSERT_EQ(said(*next), expected) << text << "\n-- became --\n" << *next;
        ASSERT_EQ(marks(*next), marks(FILES[file])) << text << "\n-- became --\n" << *next;
        text = *next;
      }
    }
  }
}

TEST(RandomChanges, ThatAskForWhatIsSoAlreadyKeepEveryByte) {
  for (const std::string& file : FILES) {
    for (unsigned seed = 0; seed < SEEDS; seed++) {
      Changes changes(seed);
      Said expected = said(file);
      const change what = changes.next(expected);
      const auto once = hopopen::edited(file, what);
      ASSERT_TRUE(once);
      change again = what;
      again.distrust.clear();  // a host that is removed and added again goes to the end
      ASSERT_EQ(hopopen::edited(*once, again), once) << *once;
      ASSERT_EQ(hopopen::edited(*once, change()), once);
    }
  }
}

TEST(RandomChanges, KeepTheLineEnds) {
  for (const std::string& file : FILES) {
    if (file.find("\r\n") == std::string::npos) {
      continue;
    }
    for (unsigned seed = 0; seed < SEEDS; seed++) {
      Changes changes(seed);
      Said expected = said(file);
      std::string text = file;
      for (int step = 0; step < 10; step++) {
        text = hopopen::edited(text, changes.next(expected)).value_or("");
        const auto count = [&](char c) { return std::count(text.begin(), text.end(), c); };
        ASSERT_EQ(count('\n'), count('\r')) << text;
        ASSERT_GT(count('\n'), 0);
      }
    }
  }
}

}  // namespace settings_random_test
