#include "platform/posix/SystemError.h"

#include <cerrno>
#include <system_error>

namespace tallybook {

FailureNumber FailureNumberOf(int error) {
  switch (error) {
    case ENOENT:
      return FailureNumber::kFileNotFound;
    case ENOTDIR:
      return FailureNumber::kPathNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EBUSY:
    case ETXTBSY:
    case EAGAIN:
      return FailureNumber::kPermissionDenied;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return FailureNumber::kDiskFull;
    case ENOLCK:
    case EOPNOTSUPP:
    case ENOSYS:
      return FailureNumber::kFeatureUnavailable;
    case EISDIR:
    case EEXIST:
    case EINVAL:
    case ELOOP:
    case EMFILE:
    case ENAMETOOLONG:
    case ENFILE:
    case ENOTEMPTY:
    case EXDEV:
      return FailureNumber::kPathOrAccess;
    case ENOMEM:
      return FailureNumber::kOutOfMemory;
    default:
      return FailureNumber::kDeviceError;
  }
}

Text WordsOfError(int error) {
  return std::generic_category().message(error);
}

}  // namespace tallybook
