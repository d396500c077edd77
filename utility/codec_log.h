// The log lines of the vCalendar codec. Readers of the log know them by their text and by the path
// before it, "utility/ZVtodoParser.cpp". An error line carries the path of the source that logs it,
// so ZVtodoParser.cpp defines these functions for all sources of the codec.
#pragma once

namespace codec_log {

// The library.
void libraryNotOpened();
void functionMissing(const char* name);
void valueNotAllocated();
void textNotWritten();

// Reading.
void textNotParsed();
void recordNotAllocated();
void todoNotRead();
void charsetFound(const char* name);
void dueDateIgnored();

// Writing.
void fileNotOpened();

}  // namespace codec_log
