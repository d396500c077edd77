// The files of the data directory, which output files must not overwrite.
#pragma once

#include <string>

namespace ulotask {

// The name of the data directory (ulo::dataDirectory), whether it exists or not. Empty if no
// variable of the environment names one.
std::string storeDirectoryName();

// The file that writing to `name` would create or replace: `name` with all symbolic links
// followed, including a link to a file that does not exist.
std::string targetOf(const std::string& name);

// Fails with Exit::notWritten if writing to `name` would create or replace a file in the data
// directory, even through symbolic or hard links.
void refuseStoreFile(const std::string& name);

// Flushes the directory entry of the file to the disk, as far as the file system can.
void syncDirectoryOf(const std::string& name);

}  // namespace ulotask
