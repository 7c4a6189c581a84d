#include "sources/LostOrderText.h"

#include <array>
#include <optional>
#include <string_view>

#include "text/TextFormat.h"
#include "value/LocalTimeText.h"
#include "value/Status.h"
#include "value/ValueText.h"

namespace kalvex::sources {

namespace {

using vantrel::PeriodAction;

struct OrderRow {
    PeriodAction action;
    std::string_view statement;
};

constexpr OrderRow kOrders[] = {
    {PeriodAction::Init, "INIT"},
    {PeriodAction::Load, "INIT_LOAD"},
    {PeriodAction::Calculate, "INIT_CALC"},
    {PeriodAction::Update, "INIT_LOAD"},
    {PeriodAction::Refresh, "INIT_LOAD_REFRESH"},
};

struct WriteRow {
    value::ValueKind kind;
    std::string_view statement;
};

constexpr WriteRow kWrites[] = {
    {value::KindCurrent, "SET"}, {value::KindHour, "PUT"}, {value::KindDay, "PUT"},
    {value::KindMonth, "PUT"},   {value::KindSpan, "PUT"}, {value::KindArchive, "MPUT"},
};

// By LossReason.
constexpr std::array<const char*, 3> kReasons = {
    platform::Translatable("Brak połączenia z serwerem"),
    platform::Translatable("Zbyt wiele zapisów i poleceń czeka na odpowiedź serwera"),
    platform::Translatable("Połączenie zerwane przed odpowiedzią serwera"),
};

constexpr const char* kLost = platform::Translatable("%s, przepadło polecenie %s");
constexpr const char* kLostValue =
    platform::Translatable("%s, przepadło polecenie %s o wartości %s");
constexpr const char* kLostList =
    platform::Translatable("%s, przepadło polecenie %s, wartości: %s");

std::string_view StatementOf(const vantrel::LostOrder& order) {
    for (const OrderRow& row : kOrders) {
        if (row.action == order.action) return row.statement;
    }
    for (const WriteRow& row : kWrites) {
        if (row.kind == order.kind) return row.statement;
    }
    return {};
}

// The statement, the kind of data and the time, as a script has them.
std::string OrderText(const vantrel::LostOrder& order) {
    std::string text(StatementOf(order));
    if (order.kind == value::KindCurrent) return text;
    text.append(" ").append(value::WordOfKind(order.kind));
    return text + " " + value::FormatLocalTime(order.time);
}

}  // namespace

std::string LostOrderText(const vantrel::LostOrder& order, const platform::Translator& translator) {
    const std::string text = OrderText(order);
    const std::string reason =
        translator.Translate(kReasons[static_cast<std::size_t>(order.reason)]);
    if (order.action) return text::FormatText(translator.Translate(kLost), {reason, text});
    if (order.kind == value::KindArchive) {
        return text::FormatText(translator.Translate(kLostList),
                                {reason, text, std::to_string(order.values.size())});
    }
    return text::FormatText(translator.Translate(kLostValue),
                            {reason, text, value::ValueToText(order.values.front())});
}

}  // namespace kalvex::sources
