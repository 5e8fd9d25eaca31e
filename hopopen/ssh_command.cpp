// SPDX-License-Identifier: MIT
#include "ssh_command.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "characters.h"

namespace hopopen {

namespace {

// Of two values for an option, the first counts, and these come before those of files.
constexpr const char* ALWAYS[] = {
    "ExitOnForwardFailure=yes",  // no tunnel is a failure
    "ClearAllForwardings=no",    // it would clear this tunnel, too
    "StreamLocalBindMask=0177",  // the socket is its owner's alone
    "StreamLocalBindUnlink=no",  // nothing is there before
    "ForwardAgent=no",
    "ForwardX11=no",
    "GSSAPIDelegateCredentials=no",
    "PermitLocalCommand=no",
    "RemoteCommand=none",   // the one below is the only one
    "SessionType=default",  // without a command it would not end
    "RequestTTY=no",
    "Tunnel=no",
    "ControlMaster=no",  // a connection that is shared would not end
    "ControlPath=none",
};

}  // namespace

std::vector<std::string> sshCommand(const gateway& through, const endpoint& to,
                                    const std::string& socket) {
  std::vector<std::string> result = {"ssh", "-f"};
  for (const char* const option : ALWAYS) {
    result.insert(result.end(), {"-o", option});
  }
  result.insert(result.end(),
                {"-L", socket + ':' + to.machine.bracketed() + ':' + std::to_string(to.port)});
  if (through.port) {
    result.insert(result.end(), {"-p", std::to_string(*through.port)});
  }
  if (through.user) {
    result.insert(result.end(), {"-l", *through.user});
  }
  result.insert(result.end(), {"--", through.machine.plain(), "sleep 20"});
  return result;
}

std::string loginCommand(const gateway& through) {
  return "ssh " + (through.port ? "-p " + std::to_string(*through.port) + ' ' : "") +
         (through.user ? *through.user + '@' : "") + through.machine.plain();
}

bool isPlainPath(const std::string& path) {
  return path.starts_with('/') && std::all_of(path.begin(), path.end(), [](char c) {
           return isWord(c) || std::string_view("/.-+@,=").find(c) != std::string_view::npos;
         });
}

}  // namespace hopopen
