// The right to a local socket: one server has it at a time, and what a dead one left behind goes.
// Main thread.
#pragma once

#include <optional>
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
    // that nobody serves. Where a group is named, `path` becomes a link to a socket in a folder of
    // its own, which the group may pass through, unless that would be too long a path for a socket.
    // False with the reason in `error`.
    bool Claim(const std::string& path, const std::string& group, platform::Notice& error);

    // Where the server has to make the socket.
    const std::string& Place() const { return m_place; }

    // Opens the socket, which the server has made by now, to the group besides the owner, if one is
    // named. False as above.
    bool Admit(platform::Notice& error);

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
    bool RemoveLeftover(platform::Notice& error) const;
    bool MakeFolder(const std::string& group, platform::Notice& error);
    bool Fail(platform::Notice& error) const;
    bool HasOwnFolder() const { return m_place != m_path; }

    std::string m_path;    // by which clients know it; empty until it is claimed
    std::string m_folder;  // for a group
    std::string m_place;
    std::optional<unsigned int> m_group;
    platform::FileLock m_lock;
};

}  // namespace kalvex::vantrel
