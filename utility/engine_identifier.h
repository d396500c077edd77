#pragma once

// The engine's UUID, as QUuid::toString() writes it: names the engine to the change reporter and
// to the application lock.
inline constexpr char engineIdentifier[] = "{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}";
