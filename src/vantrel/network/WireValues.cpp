#include "vantrel/network/WireValues.h"

#include <google/protobuf/stubs/logging.h>

#include "text/CodePage.h"

namespace kalvex::vantrel {

namespace {

#define KALVEX_ROW(name, text) text,
constexpr const char* kFaultTexts[] = {KALVEX_WIRE_FAULTS(KALVEX_ROW)};
#undef KALVEX_ROW

}  // namespace

const char* WireFaultText(WireFault fault) {
    return kFaultTexts[static_cast<std::size_t>(fault)];
}

namespace wire {

namespace {

// Type, status, time and a number at their longest.
constexpr std::size_t kValueBytes = 3 + 3 + 10 + 10;

value::CVal MakeInteger(std::uint16_t type, std::int64_t integer) {
    value::CVal value(static_cast<long long>(integer));
    value.SetType(type);
    return value;
}

value::CVal MakeEmpty(std::uint16_t type) {
    value::CVal value;
    value.SetType(type);
    return value;
}

template <class Column>
bool IsUniform(const Column& column) {
    return std::all_of(column.begin(), column.end(),
                       [&](const auto& element) { return element == column[0]; });
}

// A column that one element stands for, or none.
template <class Column>
class ColumnReader {
  public:
    explicit ColumnReader(const Column& column) : m_column(column) {}

    bool Fits(int count) const { return m_column.size() <= 1 || m_column.size() == count; }
    auto At(int index) const {
        if (m_column.empty()) return typename Column::value_type{};
        return m_column[m_column.size() == 1 ? 0 : index];
    }

  private:
    const Column& m_column;
};

}  // namespace

bool PutText(std::string_view text, std::size_t bound, std::string& out) {
    out = text::ToUtf8(text);
    if (out.size() <= bound) return true;
    out.clear();
    return false;
}

std::size_t SizeOf(const value::CVal& value) {
    return kValueBytes + (value.IsText() ? value.Text().size() : 0);
}

bool Fits(const value::CVal& value) {
    // No byte becomes more than three.
    return !value.IsText() || value.Text().size() <= kMaxTextBytes / 3 ||
           text::ToUtf8(value.Text()).size() <= kMaxTextBytes;
}

void PutValue(const value::CVal& value, pb::Value& out) {
    const std::uint16_t type = value.GetType();
    out.set_type(type);
    out.set_status(value.GetStatus());
    out.set_time(value.GetTime());
    if (value.IsText()) {
        out.set_text(text::ToUtf8(value.Text()));
    } else if (value::ValueType::IsInteger(type)) {
        out.set_integer(value.Integer());
    } else if (type == value::ValueType::Double) {
        out.set_real(value.Real());
    }
}

void AddValue(const value::CVal& value, pb::Values& out) {
    const std::uint16_t type = value.GetType();
    if (value.IsText()) {
        out.add_texts(text::ToUtf8(value.Text()));
    } else if (value::ValueType::IsInteger(type)) {
        out.add_integers(value.Integer());
    } else if (type == value::ValueType::Double) {
        out.add_reals(value.Real());
    }
    out.set_count(out.count() + 1);
    out.add_types(type);
    out.add_statuses(value.GetStatus());
    out.add_times(value.GetTime());
}

void Squeeze(pb::Values& values) {
    if (values.count() < 2) return;
    if (IsUniform(values.types())) values.mutable_types()->Truncate(1);
    if (IsUniform(values.statuses())) values.mutable_statuses()->Truncate(1);
    if (IsUniform(values.times())) values.mutable_times()->Truncate(1);
}

bool ParseBytes(std::string_view bytes, google::protobuf::MessageLite& message) {
    // What is wrong with a peer's bytes goes to the log of the program.
    [[maybe_unused]] static const auto silenced = google::protobuf::SetLogHandler(nullptr);
    return message.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()));
}

bool Parse(std::string_view bytes, google::protobuf::MessageLite& message, Reader& reader) {
    if (bytes.size() > kMaxParcelBytes) {
        reader.Note(WireFault::ParcelTooLarge);
        return false;
    }
    if (ParseBytes(bytes, message)) return true;
    reader.Note(WireFault::NotAParcel);
    return false;
}

std::string Reader::Text(const std::string& utf8, std::size_t bound, WireFault fault) {
    if (utf8.size() <= bound) return text::FromUtf8(utf8);
    Note(fault);
    return {};
}

value::ValueKind Reader::Kind(int number) {
    if (number >= value::KindNone && number <= value::KindArchive)
        return static_cast<value::ValueKind>(number);
    Note(WireFault::NumberOutOfRange);
    return value::KindNone;
}

value::CVal Reader::Value(const pb::Value& value) {
    const auto type = Narrow<std::uint16_t>(value.type());
    value::CVal result;
    auto content = pb::Value::CONTENT_NOT_SET;
    if (value::ValueType::IsInteger(type)) {
        content = pb::Value::kInteger;
        result = MakeInteger(type, value.integer());
    } else if (type == value::ValueType::Double) {
        content = pb::Value::kReal;
        result = value::CVal(value.real());
    } else if (type == value::ValueType::Text) {
        content = pb::Value::kText;
        result = value::CVal(Text(value.text()));
    } else {
        result = MakeEmpty(type);
    }
    if (value.content_case() != content) Note(WireFault::ContentMissing);
    result.SetStatus(Narrow<std::uint16_t>(value.status()));
    result.SetTime(value.time());
    return result;
}

std::vector<value::CVal> Reader::Values(const pb::Values& values) {
    const ColumnReader types(values.types());
    const ColumnReader statuses(values.statuses());
    const ColumnReader times(values.times());
    const int count =
        static_cast<int>(std::min<std::uint32_t>(values.count(), kMaxListEntries + 1));
    if (!Columns({count})) return {};
    const bool typed = count == 0 || !values.types().empty();
    if (!typed || !types.Fits(count) || !statuses.Fits(count) || !times.Fits(count)) {
        Note(WireFault::ColumnsDiffer);
        return {};
    }
    int integers = 0;
    int reals = 0;
    int texts = 0;
    std::vector<value::CVal> result;
    result.reserve(count);
    for (int index = 0; index < count && m_fault == WireFault::None; ++index) {
        const auto type = Narrow<std::uint16_t>(types.At(index));
        if (value::ValueType::IsInteger(type)) {
            if (integers == values.integers_size()) break;
            result.push_back(MakeInteger(type, values.integers(integers++)));
        } else if (type == value::ValueType::Double) {
            if (reals == values.reals_size()) break;
            result.emplace_back(values.reals(reals++));
        } else if (type == value::ValueType::Text) {
            if (texts == values.texts_size()) break;
            result.emplace_back(Text(values.texts(texts++)));
        } else {
            result.push_back(MakeEmpty(type));
        }
        result.back().SetStatus(Narrow<std::uint16_t>(statuses.At(index)));
        result.back().SetTime(times.At(index));
    }
    if (result.size() != static_cast<std::size_t>(count)) Note(WireFault::ContentMissing);
    if (m_fault != WireFault::None) result.clear();
    return result;
}

bool Reader::Columns(std::initializer_list<int> sizes) {
    const int first = *sizes.begin();
    for (const int size : sizes) {
        if (size != first) Note(WireFault::ColumnsDiffer);
    }
    if (static_cast<std::size_t>(first) > kMaxListEntries) Note(WireFault::ListTooLong);
    return m_fault == WireFault::None;
}

Farewell ReadFarewell(const pb::Farewell& in, Reader& reader) {
    Farewell farewell{in.reason()};
    if (static_cast<std::size_t>(in.addresses_size()) > kMaxAddresses) {
        reader.Note(WireFault::ListTooLong);
        return farewell;
    }
    for (const std::string& address : in.addresses()) {
        farewell.addresses.push_back(reader.Name(address));
    }
    return farewell;
}

}  // namespace wire

}  // namespace kalvex::vantrel
