// SPDX-License-Identifier: MIT
#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <utility>

#include "shown.h"

namespace hopopen {

namespace {

constexpr int WRONG_COMMAND_LINE = 1;
constexpr char SHIELD = '\x01';

// The parser gives a meaning to words in brackets and to some others, and uses the next word
// for an empty value.  A last character that it does not know keeps a word as it is.
std::string shielded(std::string word) {
  if (word.empty() || word.front() != '-' || std::strchr("]=", word.back()) != nullptr ||
      word.back() == SHIELD) {
    word += SHIELD;
  }
  return word;
}

void unshield(std::string& word) {
  if (!word.empty() && word.back() == SHIELD) {
    word.pop_back();
  }
}

// What the parser fills in.
struct given {
  options read;
  std::string viewer;
  std::string host;
  std::string format = "text";
  std::vector<std::string> use, forget, trust, distrust;
  bool list = false;
  bool check = false;
};

void declare(CLI::App& app, given& into) {
  constexpr int any = CLI::detail::expected_max_vector_size;
  app.set_version_flag("--version", std::string("hopopen ") + HOPOPEN_VERSION);
  app.set_help_flag("-h,--help", "Print this help and end");
  app.add_option("LINK", into.read.link, "The link to open, such as vnc://host:5900");
  app.add_option("--viewer", into.viewer, "Open the link in this viewer")
      ->type_name("NAME")
      ->expected(1);
  app.add_flag("--dry-run", into.read.dryRun, "Print what would happen, and start nothing");
  app.add_option("--format", into.format, "Print text or json")->type_name("FORMAT")->expected(1);
  app.add_option("--log", into.read.log, "Append a log to this file")
      ->type_name("FILE")
      ->expected(1);
  app.add_flag("--quiet", into.read.quiet, "Show no message");
  app.add_flag("--list", into.list, "Print the viewers, and which links they open");
  app.add_flag("--check", into.check, "Say why a click on a link does nothing");
  app.add_option("--use", into.use, "Open links in this viewer from now on")
      ->type_name("NAME [SCHEME]")
      ->expected(1, any);
  app.add_option("--forget", into.forget, "Choose no viewer for these schemes any more")
      ->type_name("SCHEME")
      ->expected(1, any);
  app.add_option("--for", into.host,
                 "Use or forget for this machine, or with a leading dot all below")
      ->type_name("HOST")
      ->expected(1);
  app.add_option("--trust", into.trust, "Trust these machines, or with a leading dot all below")
      ->type_name("HOST")
      ->expected(1, any);
  app.add_option("--distrust", into.distrust, "Trust these machines no more")
      ->type_name("HOST")
      ->expected(1, any);
}

ending wrong(const std::string& what) {
  return {"", "hopopen: " + what + "\nUsage: hopopen [OPTION]... [--] LINK\nSee hopopen --help.\n",
          WRONG_COMMAND_LINE};
}

// What the parser says of a fault may quote a link with its password, so it is not shown.
ending explain(const CLI::App& app) {
  for (const std::string& word : app.remaining()) {
    if (word.starts_with('-') && word != "--") {
      return wrong("There is no option " + shownWord(word.substr(0, word.find('='))) + '.');
    }
  }
  if (app.remaining_size() > 0) {
    return wrong("Only one link can be opened at a time.");
  }
  return wrong("An option has no value, or has one too many.");
}

// Takes over what was asked for, if it is exactly one thing.
bool takeWish(const CLI::App& app, given& from) {
  std::size_t count = 0;
  const auto take = [&](const char* option, wish what, std::vector<std::string> words) {
    if (app.count(option) > 0) {
      count++;
      from.read.what = what;
      from.read.words = std::move(words);
    }
  };
  take("LINK", wish::OPEN, {});
  take("--list", wish::LIST, {});
  take("--check", wish::CHECK, {});
  take("--use", wish::USE, from.use);
  take("--forget", wish::FORGET, from.forget);
  take("--trust", wish::TRUST, from.trust);
  take("--distrust", wish::DISTRUST, from.distrust);
  unshield(from.read.link);
  if (app.count("--viewer") > 0) {
    unshield(from.viewer);
    from.read.viewer = from.viewer;
  }
  if (app.count("--for") > 0) {
    unshield(from.host);
    from.read.host = from.host;
  }
  unshield(from.read.log);
  unshield(from.format);
  std::for_each(from.read.words.begin(), from.read.words.end(), unshield);
  return count == 1;
}

}  // namespace

std::optional<ending> readOptions(int count, const char* const* arguments, options& into) {
  CLI::App app("Opens a link such as vnc://host or ssh://user@host in the right viewer.",
               "hopopen");
  given read;
  declare(app, read);
  std::vector<std::string> words;
  for (int i = count - 1; i > 0; i--) {  // the parser takes them from the end
    words.push_back(shielded(arguments[i]));
  }
  try {
    app.parse(words);
  } catch (const CLI::CallForHelp&) {
    return ending{app.help(), "", 0};
  } catch (const CLI::CallForVersion&) {
    return ending{std::string("hopopen ") + HOPOPEN_VERSION + '\n', "", 0};
  } catch (const CLI::ParseError&) {
    return explain(app);
  }
  if (!takeWish(app, read)) {
    return wrong("Give one link, or one of --list, --check, --use, --forget, --trust, --distrust.");
  }
  if (read.read.host && read.read.what != wish::USE && read.read.what != wish::FORGET) {
    return wrong("Give --for together with --use or --forget.");
  }
  if (read.format != "text" && read.format != "json") {
    return wrong("The format must be text or json.");
  }
  into = read.read;
  into.json = read.format == "json";
  return {};
}

}  // namespace hopopen
