// access/model/collection.h - the members of engine.h's Collection.
#pragma once

#include <string>

#include "access/engine.h"
#include "platform/paths.h"

namespace velnor {

namespace model {
[[noreturn]] void throwNotInCollection(std::string_view name);
/// The error of appending a second item of one name.
EngineErrorNumber appendedTwice(const Field&);
EngineErrorNumber appendedTwice(const Index&);
EngineErrorNumber appendedTwice(const TableDef&);
}  // namespace model

template <class T> T& Collection<T>::Item(int n)
{
    if (n < 0 || n >= Count())
        model::throwNotInCollection(std::to_string(n));
    return items_[static_cast<std::size_t>(n)];
}

template <class T> T& Collection<T>::Item(std::string_view name)
{
    for (T& item : items_)
        if (item.Name() == name)
            return item;
    for (T& item : items_)
        if (paths::sameName(item.Name(), name))
            return item;
    model::throwNotInCollection(name);
}

template <class T> bool Collection<T>::contains(std::string_view name) const
{
    for (const T& item : items_)
        if (paths::sameName(item.Name(), name))
            return true;
    return false;
}

template <class T> void Collection<T>::Append(T item)
{
    if (contains(item.Name()))
        throw EngineError(model::appendedTwice(item), "There is a " + item.Name() + " already.");
    if (onAppend_)
        onAppend_(item);
    items_.push_back(std::move(item));
}

template <class T> void Collection<T>::Delete(std::string_view name)
{
    T& item = Item(name);
    const auto at = &item - items_.data();
    if (onDelete_)
        onDelete_(item);
    items_.erase(items_.begin() + at);
}

template <class T> void Collection<T>::Refresh()
{
    if (onRefresh_)
        items_ = onRefresh_();
}

}  // namespace velnor
