#pragma once

#include "base/line_sink.h"
#include "session.h"

#include <string>

namespace ulo::odb {

// Lists what the session makes of a text, and runs it; see DB_Explain in ulodb2.h. `what` is a
// combination of DB_ExplainWhat. Throws Failure.
void explain(Session& session, const std::string& text, int what, ParameterView parameters,
             const LineSink& line);

}  // namespace ulo::odb
