// Threads beside the main one: what each is called, and how one begins.
#pragma once

#include <functional>
#include <thread>

#include "platform/Translator.h"

namespace kalvex::platform {

struct ThreadIdentity {
    const char* name = "";  // the system shows its first 15 characters
    int ident = 0;
};

// Of the thread that calls.
void SetThreadIdentity(const ThreadIdentity& identity);
const ThreadIdentity& GetThreadIdentity();

// A thread that does the work under this identity and sees no signals, which are the main thread's.
// A thread that cannot be started is not joinable.
std::thread StartThread(const ThreadIdentity& identity, std::function<void()> work);

// What keeps a service from having the threads that it needs, among them those of the library that
// carries messages, which waits for ever for one that the system has refused. Starts them all and
// ends them again.
Notice CheckThreads();

}  // namespace kalvex::platform
