#include "base/Failure.h"

#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

namespace tallybook {

namespace {

FailureNumber NumberOf(const std::error_code& code) {
  if (code == std::errc::no_such_file_or_directory) return FailureNumber::kFileNotFound;
  if (code == std::errc::permission_denied) return FailureNumber::kPermissionDenied;
  if (code == std::errc::no_space_on_device) return FailureNumber::kDiskFull;
  return FailureNumber::kPathOrAccess;
}

}  // namespace

Failure::Failure(FailureNumber number, Text description, Text source)
    : number_(number), description_(std::move(description)), source_(std::move(source)) {}

Failure CurrentFailure() {
  try {
    throw;
  } catch (const Failure& failure) {
    return failure;
  } catch (const std::bad_alloc&) {
    return {FailureNumber::kOutOfMemory, "Out of memory"};
  } catch (const std::filesystem::filesystem_error& error) {
    return {NumberOf(error.code()), error.what()};
  } catch (const std::exception& error) {
    return {FailureNumber::kInternal, error.what()};
  } catch (...) {
    return {FailureNumber::kInternal, "Something that is no exception of this system was thrown"};
  }
}

StopReason ReasonOf(const Failure& failure) {
  return {.words = failure.Description(), .number = failure.Code(), .statement = failure.Statement()};
}

}  // namespace tallybook
