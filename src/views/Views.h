// The views of all forms of the component. For renderers alone: no dialog knows how it looks. One thread.
#pragma once

#include <vector>

#include "base/Types.h"
#include "views/View.h"

namespace tallybook::views {

[[nodiscard]] const std::vector<FormView>& AllViews();

// The view of a form by its name. Failure 5 for a form that has none: it would have no window.
[[nodiscard]] const FormView& ViewOf(const Text& form);

}  // namespace tallybook::views
