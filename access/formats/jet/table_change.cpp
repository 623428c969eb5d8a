#include "access/formats/jet/table_change.h"

#include "access/formats/jet/jet_writer.h"
#include "access/formats/jet/structure.h"

namespace velnor::jet {

TableChange::TableChange(JetFile& file, Catalog& catalog, CatalogEntry entry,
                         std::shared_ptr<JetTable> table, TableByPage tables)
    : file_(file), catalog_(catalog), entry_(std::move(entry)), table_(std::move(table)),
      tables_(std::move(tables)), def_(table_->def())
{
    if (entry_.attributes() & kSystemTableBits)
        throw EngineError(EngineErrorNumber::NotSupported,
                          "\"" + entry_.name + "\" is a system table and cannot be changed.");
    if (!table_->whyReadOnly().empty())
        throw EngineError(EngineErrorNumber::NotSupported, table_->whyReadOnly());
}

void TableChange::write()
{
    writeTableChain(file_, buildTableDef(def_, file_.names()), def_.chain);
}

std::optional<std::string>
TableChange::changedProperties(const std::function<void(PropertyBlock&)>& change)
{
    const PropertyText text{!file_.format().wideText, &file_.codePage()};
    const auto objects = catalog_.objectTable();
    PhysicalCursor cursor(objects);
    const int at = fieldNamed(*objects, "LvProp");
    const bool there = at >= 0 && cursor.moveTo(entry_.row);
    const ValueView bytes = there ? cursor.field(at) : ValueView::null();
    PropertyBlock block(text);
    if (bytes.kind() == ValueKind::Bytes)
        block = PropertyBlock::parse(bytes.asBytes(), text);
    const std::string before = block.build();
    change(block);
    std::string after = block.build();
    return after == before ? std::nullopt : std::optional(std::move(after));
}

void TableChange::touchCatalog(const std::optional<std::string>& properties)
{
    const auto objects = catalog_.objectTable();
    std::vector<FieldChange> changes;
    const auto change = [&](const char* field, ValueView value) {
        const int at = fieldNamed(*objects, field);
        if (at >= 0)
            changes.push_back({at, value});
    };
    change("DateUpdate", ValueView::date(catalogTime()));
    if (properties && properties->empty())
        change("LvProp", ValueView::null());
    else if (properties)
        change("LvProp",
               ValueView::bytes({reinterpret_cast<const std::uint8_t*>(properties->data()),
                                 properties->size()}));
    JetWriter(objects, tables_, false).update(entry_.row, changes);
    catalog_.forget();
}

}  // namespace velnor::jet
