// SPDX-License-Identifier: MIT
// Remote-access URIs and the argument vectors of their viewers.
//
// The text form (in the spirit of RFC 3986):
//
//     scheme "://" address { ("+" or ",") address } "/"
//         [ keyId "," ] ticket [ "?" name "=" value { "&" name "=" value } ]
//
// The ticket is base64; parameters are read only when it is empty.  A `URI` is
// built from a text, asked whether it is `okay`, and then gives the vector for
// `execvp`, which it owns.  Parsing never throws and never reports; it answers
// false, and is the same whatever locale the program has set.  A URI belongs to one
// thread.  URIs may be used before `main`, in a
// forked child and at exit.
//
// What is kept here is for one thread of a process only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "assoclist.h"
#include "bytearray.h"
#include "configRef.h"

#pragma GCC visibility push(default)

class RegExpr;

/// How a viewer is given the value of an option.
enum argsStyle : int {
  AS_EQUALS = 0,   ///< in one argument: -name=value
  AS_SEPARATE = 1  ///< in two: -name value
};

/// "equals", "separate", or "<invalid argsStyle>".
const char* text(argsStyle style);
/// The style of a text, letter case ignored; `AS_EQUALS` for any other text.
argsStyle args_style(const std::string& name);

/// What the parser of a URI's text was after when it stopped.
enum uriStop : int {
  US_COMPLETE = 0,   ///< nothing: the text is a URI
  US_SCHEME = 1,     ///< the scheme
  US_SEPARATOR = 2,  ///< the "://" after the scheme
  US_DELIMITER = 3,  ///< the "/" after the addresses
  US_ADDRESS = 4,    ///< an address
  US_TICKET = 5,     ///< the ticket
  US_PARAMETER = 6   ///< the "=" of a parameter
};

/// What the grammar wants there, to be put after "expected", for example
/// "an address".  "nothing more" for a complete URI, and
/// "<invalid uriStop>".
const char* text(uriStop stop);

/// Where and why parsing ended.
struct uriParse {
  uriStop stop;        ///< `US_COMPLETE` when the text is a URI
  std::size_t offset;  ///< in bytes, of the byte that does not fit or of the text's end
};

/// Reads decimal digits up to the first other character; no digit gives 0, as does
/// null.  The value wraps in 32 bits.
std::int32_t decimalInt(const char* digits);

/// The viewer program for each scheme: "VNC=vncviewer", "SSH=putty".
extern configArray PROGRAMS;
/// The scheme that `URI::format` writes for a URI without one: "VNC".
extern configString URI_SCHEME;
/// The options that every VNC viewer gets: "-autoreconnect=0".
extern configArray VNC_OPTIONS;

/// One remote-access address.
class URI {
 public:
  /// An empty URI, not okay.
  URI() = default;
  /// Parses `text`; `okay` says whether that worked.
  explicit URI(const std::string& text);
  /// Copies the ticket, the key id, the addresses and the okay flag, but neither
  /// the scheme nor the parameters: a copy is good for whom to call, not how.
  URI(const URI& other);
  /// Copies what the constructor copies and drops the cached argument vector.
  URI& operator=(const URI& other);
  ~URI();

  /// Parses `text` into this URI.  On failure the addresses, the key id and the
  /// ticket are emptied.  Does not change `okay`; parameters of earlier texts
  /// stay, unless replaced by one of the same name.
  URI& operator=(const std::string& text);

  /// Parses `text`, up to its first NUL byte, and returns whether that worked.
  /// On failure what was stored until then stays.  Does not change `okay`.
  bool set(const std::string& text) { return parse(text).stop == US_COMPLETE; }

  /// The same, for whoever wants to say what is wrong with the text.
  ///
  ///     URI().parse("vnc://h")   // US_DELIMITER at 7
  uriParse parse(const std::string& text);

  /// Whether the text given to the constructor parsed.
  bool okay() const { return m_okay; }
  /// The scheme as written.
  const std::string& scheme() const { return m_scheme; }

  /// The text form, with the parameters after the ticket and percent-encoded.
  std::string format() const;

  /// Frees the argument vector.
  void clear();

  /// Replaces the ticket and drops the argument vector.
  void setTicket(const ByteArray& newTicket);
  /// The ticket in hexadecimal.
  std::string hexString() const { return ticket.format(16); }
  /// Appends an address, which is not tested, and drops the argument vector.
  void add(const std::string& address);
  /// Appends addresses.  A `port` of 0 or more replaces what is after the
  /// last ":" of each, the inside of a bracketed address not excepted.  A cached
  /// argument vector stays as it is.
  void add(const std::vector<std::string>& extra, int port);
  /// Stores one parameter, replacing one of the same name.
  void addParam(const std::string& name, const std::string& value);
  /// Sets the key id; -1 means none.
  void setKeyId(int id) { keyId = id; }

  /// The number of arguments that one option needs in a style, 1 or 2.
  /// REQUIRES: `style` is one of the enumeration.
  unsigned int valuesPerOption(argsStyle style) const;

  /// The viewer's argument vector: `commandName`, one option for each parameter
  /// in the order of their names, the port option, the addresses, and null.
  ///
  /// - VNC viewers also get the options of the item `VNC_OPTIONS`, which a
  ///   parameter of the same name replaces; a ticket becomes the option "ticket".
  /// - At most `maxHosts` addresses are passed, all if it is 0.
  /// - With `portArg`, the text after the last ":" of the first address is
  ///   passed as the value of that option, and addresses lose theirs.
  /// - The vector is built by the first call and kept until `clear`; later calls
  ///   only replace the command name.
  ///
  /// The URI owns the vector and its strings.
  char** args(const char* commandName, unsigned int maxHosts, argsStyle style, const char* portArg);

 private:
  uriStop parseAddresses(const char*& ptr, const RegExpr& machine_RE);
  uriStop parseTicket(const char*& ptr);
  uriStop parseParameters(const char*& ptr);
  void buildArgs(assocList options, unsigned int maxHosts, argsStyle style, const char* portArg);

  std::string m_scheme;

 public:
  ByteArray ticket;                    ///< empty when there is none
  std::int32_t keyId = -1;             ///< -1 when there is none
  std::vector<std::string> addresses;  ///< each with its port, if any
  assocList parameters;                ///< by name, values decoded

 private:
  char** argsList = nullptr;  // owned, as are its strings
  bool m_okay = false;
  std::string ticketText;
};

#pragma GCC visibility pop
