// Detail views as screen readers see them.
#pragma once

namespace ulo {

// Has screen readers see every detail view as a list of its rows, one of them the current one. Only
// the first call has an effect.
void describeDetailViews();

}  // namespace ulo
