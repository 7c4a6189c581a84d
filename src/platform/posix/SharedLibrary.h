// A library of the system that is loaded at run time, for what few processes need: the others start
// without it, and so does a machine that does not have it.
#pragma once

#include <dlfcn.h>

namespace kalvex::platform {

// Stays loaded until the end of the process.
class SharedLibrary {
  public:
    explicit SharedLibrary(const char* file)
        : m_library(dlopen(file, RTLD_NOW | RTLD_LOCAL)), m_complete(m_library != nullptr) {}

    // A function by its name; null when it is not there.
    template <class Function>
    Function Find(const char* name) {
        void* found = m_library == nullptr ? nullptr : dlsym(m_library, name);
        m_complete = m_complete && found != nullptr;
        return reinterpret_cast<Function>(found);
    }

    // The library and all that was looked for are there.
    bool IsComplete() const { return m_complete; }

  private:
    void* m_library;
    bool m_complete;
};

}  // namespace kalvex::platform
