#include "tallybook/engine/LoginName.h"

#include <pwd.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace tallybook::engine {

Text LoginName() {
  constexpr std::size_t kRoom = 16'384;
  std::vector<char> room(kRoom);
  passwd entry{};
  passwd* found = nullptr;
  const uid_t user = geteuid();
  if (getpwuid_r(user, &entry, room.data(), room.size(), &found) == 0 && found != nullptr) return found->pw_name;
  return "user " + std::to_string(user);
}

}  // namespace tallybook::engine
