#pragma once

#include <functional>
#include <string>
#include <vector>

namespace corvane {

/// True when a file lies at the path: no folder, and no pipe, which could not be read a second time. Paths here are in
/// the system's bytes.
bool FileExists(const std::string& path);
bool FolderExists(const std::string& path);

/// True when something lies at the path that is neither a file nor a folder: a pipe, a device, a socket.
bool isSpecialFile(const std::string& path);

/// True when both paths mean one file, by whatever links and names, or would mean one that does not exist yet.
bool isSameFile(const std::string& one, const std::string& other);

/// The names of the files in a folder; none when it cannot be read.
std::vector<std::string> filesIn(const std::string& folder);

/// Makes a folder and those above it that are missing, and hands over each folder in which one was made. The reason in
/// words when that was not possible; empty when the folder is there.
std::string makeFolder(const std::string& path, const std::function<void(const std::string& folder)>& madeIn = {});

/// Deletes a file if there is one; False when it could not be deleted, and why, in the system's words.
bool deleteFile(const std::string& path);
bool deleteFile(const std::string& path, std::string& why);

/// True when a site's name for a file may be used as a local name: not empty, "." or "..", no separator and no control
/// character in it. Everything else could end up outside the folder that it is meant for.
bool isSafeFileName(const std::string& name);

}  // namespace corvane
