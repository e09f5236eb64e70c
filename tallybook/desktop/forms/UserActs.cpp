#include "tallybook/desktop/forms/UserActs.h"

namespace tallybook::desktop {

namespace {

std::exception_ptr& Kept() {
  static std::exception_ptr failure;
  return failure;
}

}  // namespace

void KeepFailure(std::exception_ptr failure) noexcept {
  if (!Kept()) Kept() = std::move(failure);
}

void RaiseKeptFailure() {
  if (Kept()) std::rethrow_exception(std::exchange(Kept(), nullptr));
}

}  // namespace tallybook::desktop
