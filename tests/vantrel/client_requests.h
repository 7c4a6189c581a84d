// A connection to a server within the process, whose answers are in the hands of the test.
#pragma once

#include <gmock/gmock.h>

#include "support/hand_server.h"
#include "vantrel/Codes.h"

namespace kalvex::vantrel {

class ClientRequests : public testing::Test {
  protected:
    void SetUp() override {
        network.AddServer("srv", server);
        connection.Create(23, "srv", "Kalvex", network, &journal);
        network.Deliver();
        Forget();
    }

    void Forget() {
        server.heard.clear();
        connection.events.clear();
        journal.entries.clear();
    }

    RequestId Read(value::ValueKind kind, std::int64_t from, std::int64_t to,
                   value::CArchiveValueList* into = nullptr) {
        const RequestId id = connection.AddDataRequest(kind, "V", from, to, into, window);
        connection.MakeDataRequest(kind);
        network.Deliver();
        return id;
    }

    void Break() {
        network.Break("srv", ReasonLost);
        network.Deliver();
    }

    // Of the writes that the server has heard.
    std::vector<std::uint64_t> Serials() const { return server.serials; }

    static value::CVal At(std::int64_t time, double number) {
        value::CVal value(number);
        value.SetTime(time);
        return value;
    }

    using Owner = support::HeardConnection::Owner;

    support::InProcessNetwork network;
    support::HandServer server;
    support::HeardJournal journal;
    support::HeardConnection connection;
    support::HeardWindow window;
    value::CArchiveValueList list;
    Owner owner;
};

}  // namespace kalvex::vantrel
