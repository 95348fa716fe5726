// The shared object as a program of the user's would load it.
#pragma once

#include <string>

namespace tools {

class Library {
public:
    // Loads libmorvenqvr.so.1, or `path`. After a failure error() says in one sentence what is wrong.
    explicit Library(const char* path = nullptr);

    const std::string& error() const { return error_; }
    // The function Morven_<name>, or null with error() set: then the shared object is older than this program.
    void* function(const char* name);
    // The number of the slot that its load hook chose, read where its dispatchers read it; -1 if they are of another
    // form.
    int slot() const;
    // The file, links resolved; its version, as its name ends; the build's identifier in hexadecimal.
    std::string path() const;
    std::string version() const;
    std::string buildId() const;

private:
    void* handle_ = nullptr;
    std::string error_;
};

} // namespace tools
