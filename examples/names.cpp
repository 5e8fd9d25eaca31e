// SPDX-License-Identifier: MIT
// Arithmetic with distinguished names (RFC 4514): take apart, put together, compare, and
// find one that is free.

#include <hoplaunch/DistName.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

namespace {

// Acceptable is what is not in the directory yet.
class notTaken : public DistName::criterion {
 public:
  explicit notTaken(const std::vector<DistName>& taken) : m_taken(taken) {}
  bool operator()(const DistName& name) const override {
    return std::find(m_taken.begin(), m_taken.end(), name) == m_taken.end();
  }

 private:
  const std::vector<DistName>& m_taken;
};

}  // namespace

int main() {
  // Put together.  What comes from people is escaped; commas are not added.
  const DistName root("example.com", DistName::DOMAIN);
  const DistName users(("OU=Users," + root.str()).c_str());
  const DistName ada(("CN=" + DistName::escape("Lovelace, Ada") + "," + users.str()).c_str());
  std::cout << ada.str() << '\n';

  // Take apart.
  std::cout << ada.segments() << " segments\n"
            << ada.firstKey() << " is " << ada.shortName() << '\n'
            << "parent: " << ada.parent().str() << '\n'
            << "domain: " << ada.extractId("DC", DistName::FORWARD, '.') << '\n'
            << "path: " << ada.canonicalName() << '\n';

  // Change.
  std::cout << "renamed: " << ada.rename("Ada").str() << '\n';

  // Compare: letter case and blanks around segments do not matter, and a parent is
  // right before its children.
  const DistName same("cn=lovelace\\, ada, ou=users, dc=example, dc=com");
  std::cout << "the same: " << (ada == same ? "yes" : "no") << '\n';
  std::vector<DistName> names = {ada, root, users};
  std::sort(names.begin(), names.end());
  for (const DistName& name : names) {
    std::cout << "- " << name.str() << '\n';
  }

  // Find a free name: a numbered suffix, in at most 100 tries and 20 characters.
  const DistName guest(("CN=guest," + users.str()).c_str());
  const DistName guest1(("CN=guest-1," + users.str()).c_str());
  const std::vector<DistName> taken = {guest, guest1};
  std::cout << "free: " << guest.newName(notTaken(taken), 100, 20).str() << '\n';
  return 0;
}
