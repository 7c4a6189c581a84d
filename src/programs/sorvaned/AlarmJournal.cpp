#include "programs/sorvaned/AlarmJournal.h"

#include <iostream>
#include <nlohmann/json.hpp>

#include "programs/ShownValues.h"
#include "server/StoreReader.h"
#include "text/CodePage.h"
#include "value/LocalTimeText.h"
#include "value/ValueText.h"

namespace kalvex::sorvaned {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kNothing = "-";

std::string TimeText(const std::optional<std::int64_t>& time) {
    return time ? value::FormatLocalTime(*time) : kNothing;
}

std::string OrNothing(const std::string& text) {
    return text.empty() ? kNothing : programs::ShownText(text);
}

std::string LineOf(const server::JournalAlarm& alarm) {
    const server::Writer who = alarm.who.value_or(server::Writer());
    std::string line = programs::ShownText(alarm.variable);
    for (const std::string& field :
         {std::string(server::RowOf(alarm.stage).word), TimeText(alarm.began),
          alarm.number ? value::FormatDouble(*alarm.number) : kNothing, TimeText(alarm.ended),
          TimeText(alarm.acknowledged), OrNothing(who.user), OrNothing(who.client),
          OrNothing(who.address)}) {
        line += '\t' + field;
    }
    return line;
}

template <class Content>
Json OrNull(const std::optional<Content>& content) {
    return content ? Json(*content) : Json();
}

Json JsonOf(const server::JournalAlarm& alarm) {
    Json who;
    if (alarm.who) {
        who = {{"user", text::ToUtf8(alarm.who->user)},
               {"client", text::ToUtf8(alarm.who->client)},
               {"address", alarm.who->address}};
    }
    return {{"variable", text::ToUtf8(alarm.variable)},
            {"stage", server::RowOf(alarm.stage).word},
            {"began", alarm.began},
            {"value", OrNull(alarm.number)},
            {"ended", OrNull(alarm.ended)},
            {"acknowledged", OrNull(alarm.acknowledged)},
            {"who", std::move(who)}};
}

}  // namespace

int ShowAlarms(const server::Definitions& definitions, const SorvanedOptions& options,
               const platform::Translator& translator) {
    server::StoreReader reader;
    platform::Notice fault;
    const std::string path = server::StorePath(definitions);
    if (!reader.Open(path, fault)) {
        std::cerr << platform::InWords(fault, translator) << '\n';
        return programs::ExitFailed;
    }
    const server::AlarmChoice choice{text::FromUtf8(options.pattern), options.active, options.from,
                                     options.to};
    reader.ReadAlarms(choice, [&](const server::JournalAlarm& alarm) {
        std::cout << (options.json ? JsonOf(alarm).dump() : LineOf(alarm)) << '\n';
    });
    if (!reader.Fault().empty()) {
        std::cerr << path << ": " << reader.Fault() << '\n';
        return programs::ExitFailed;
    }
    return programs::ExitDone;
}

}  // namespace kalvex::sorvaned
