// Where the project's own files lie that tests read: pages, examples, sample books.
#pragma once

#include <filesystem>
#include <string>

namespace tallybook::testing {

// `path` counts from the project's folder.
[[nodiscard]] std::filesystem::path InCheckout(const std::string& path);

}  // namespace tallybook::testing
