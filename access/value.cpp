#include "access/value.h"

namespace velnor {

void Value::assign(ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Text: {
        const std::string_view text = v.asText();
        store_.assign(text.data() ? text.data() : "", text.size());
        view_ = ValueView::text({});
        break;
    }
    case ValueKind::Bytes: {
        const auto bytes = v.asBytes();
        const char* data = reinterpret_cast<const char*>(bytes.data());
        store_.assign(data ? data : "", bytes.size());
        view_ = ValueView::bytes({});
        break;
    }
    default:
        view_ = v;
    }
}

ValueView Value::view() const
{
    switch (view_.kind()) {
    case ValueKind::Text:
        return ValueView::text(store_);
    case ValueKind::Bytes:
        return ValueView::bytes(
            {reinterpret_cast<const std::uint8_t*>(store_.data()), store_.size()});
    default:
        return view_;
    }
}

}  // namespace velnor
