// Accessibility of detail views.
#pragma once

namespace ulo {

// Presents every detail view to screen readers as a list of rows with a current row. Only the first
// call has an effect.
void describeDetailViews();

}  // namespace ulo
