// How every application of ours opens a book to change it: what earlier imports have left to do with their files
// (FileDisposals.h) is done first.
#pragma once

#include <memory>

#include "base/Types.h"
#include "host/HostApp.h"
#include "platform/FileSystem.h"
#include "tallybook/engine/Book.h"

namespace tallybook::application {

// `files` delete and rename. What becomes of each file, or why that cannot be told, is a line for the notice of
// `options`; the book is open whatever becomes of them. Fails as Book::Open.
[[nodiscard]] std::unique_ptr<engine::Book> OpenToChange(const Text& path, HostApp& app,
                                                         const engine::BookOptions& options, FileSystem& files);

}  // namespace tallybook::application
