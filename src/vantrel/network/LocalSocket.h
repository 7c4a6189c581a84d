// The right to a local socket: one server has it at a time, and what a dead one left behind goes.
// Main thread.
#pragma once

#include <string>

#include "platform/FileLock.h"
#include "platform/Translator.h"

namespace kalvex::vantrel {

class LocalSocket {
  public:
    LocalSocket() = default;
    ~LocalSocket();
    LocalSocket(const LocalSocket&) = delete;
    LocalSocket& operator=(const LocalSocket&) = delete;

    // Makes the folder if it is not there, takes the lock beside the socket and removes a socket
    // that nobody serves. False with the reason in `error`.
    bool Claim(const std::string& path, platform::Notice& error);

    // Opens the socket, which the server has made by now, to the group besides the owner. False as
    // above.
    bool Admit(const std::string& group, platform::Notice& error);

    // Until the object goes, what the process makes is for its owner alone.
    class OwnerOnly {
      public:
        OwnerOnly();
        ~OwnerOnly();
        OwnerOnly(const OwnerOnly&) = delete;
        OwnerOnly& operator=(const OwnerOnly&) = delete;

      private:
        unsigned int m_mask;
    };

  private:
    std::string m_path;  // empty until it is claimed
    platform::FileLock m_lock;
};

}  // namespace kalvex::vantrel
