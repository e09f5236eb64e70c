// Names with wildcards: the one rule by which every file system of ours matches and orders file names.
#pragma once

#include "base/Types.h"

namespace tallybook {

// True where `name` matches `pattern` without regard to case: `*` stands for any characters or none, `?` for exactly
// one.
// `*.*` matches every name, also one without a point. An empty pattern matches nothing.
[[nodiscard]] bool MatchesWildcard(const Text& name, const Text& pattern);

// The order of a search's result: by name without regard to case; names that differ in case only, by their bytes.
[[nodiscard]] bool ComesBefore(const Text& name, const Text& other);

}  // namespace tallybook
