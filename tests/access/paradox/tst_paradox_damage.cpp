// Real families with bits turned and ends cut off: an answer or an error, never a crash or a hang.
#include <random>

#include "tests/access/paradox/paradox_testing.h"

using namespace velnor;
using namespace velnor::paradox_testing;

namespace {

/// Opens, reads by every index, counts, checks, writes, changes fields. Only EngineError and
/// RunError may come.
void useTable(FileSystem& files)
{
    const auto attempt = [](auto work) {
        try {
            work();
        } catch (const EngineError&) {
        } catch (const RunError&) {
        }
    };
    attempt([&] {
        const auto store = openStore(files, "Paradox 5.x;", true, "123");
        rowsOf(*store);
        store->recordCount("T");
        store->info("T");
        for (const IndexDef& index : store->layout("T").indexes)
            attempt([&] { rowsOf(*store, index.name); });
        attempt([&] { faultsOf(*store); });
    });
    attempt([&] {
        const auto store = openStore(files, "Paradox 5.x;", false, "123");
        const auto fields = store->layout("T").fields.size();
        {
            const auto writer = store->writer("T");
            const auto cursor = store->cursor("T", std::nullopt);
            if (cursor->first())
                attempt([&] { writer->update(cursor->row(), {}); });
            if (cursor->next())
                attempt([&] { writer->remove(cursor->row()); });
            attempt([&] { writer->insert(std::vector<ValueView>(fields)); });
        }
        store->commit();
        attempt([&] { store->addField("T", fieldDef("EXTRA", FieldType::Double)); });
        faultsOf(*store);
    });
}

struct Family {
    std::filesystem::path table;
    std::vector<std::pair<std::string, Bytes>> files;
};

std::vector<Family> families()
{
    std::vector<Family> found;
    const auto folder = corpusFolder();
    if (folder.empty())
        return found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const std::string extension = entry.path().extension().string();
        if ((extension != ".DB" && extension != ".db") || entry.file_size() > 40000)
            continue;
        MemoryFileSystem files;
        putFamily(files, entry.path());
        Family family{entry.path(), {}};
        for (const FileInfo& file : files.list("C:\\"))
            if (file.size < 300000)
                family.files.emplace_back(file.name, files.content("C:\\" + file.name));
        found.push_back(std::move(family));
    }
    return found;
}

}  // namespace

TEST(ParadoxDamage, damagedFamiliesAreAnsweredOrRefused)
{
    const std::vector<Family> all = families();
    if (all.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    const char* rounds = std::getenv("VELNOR_DAMAGE_ROUNDS");
    std::mt19937 random(3);
    for (int round = 0; round < (rounds ? std::atoi(rounds) : 1500); ++round) {
        const Family& family = all[random() % all.size()];
        const std::size_t victim = random() % family.files.size();
        MemoryFileSystem files(64u << 20);
        for (std::size_t i = 0; i < family.files.size(); ++i) {
            Bytes bytes = family.files[i].second;
            if (i == victim && !bytes.empty()) {
                const std::size_t within =
                    random() % 3 ? std::min<std::size_t>(bytes.size(), 2200) : bytes.size();
                for (unsigned k = 0; k <= random() % 3; ++k)
                    bytes[random() % within] = static_cast<std::uint8_t>(random());
                if (random() % 8 == 0)
                    bytes.resize(random() % bytes.size());
            }
            files.put("C:\\" + family.files[i].first, bytes);
        }
        SCOPED_TRACE(family.table.string() + ", round " + std::to_string(round));
        useTable(files);
    }
}

TEST(ParadoxDamage, aTableWhoseKeyHasNoFieldsIsReadLikeOneWithoutAKey)
{
    MemoryFileSystem files;
    {
        const auto store = openStore(files);
        store->createTable(layoutOf({fieldDef("ID", FieldType::Long)}, {primaryDef({"ID"})}));
        const auto writer = store->writer("T");
        for (int i = 0; i < 2000; ++i)
            writer->insert(std::array{whole(i)});
        store->commit();
    }
    Bytes bytes = files.content("C:\\T.DB");
    bytes.at(0x23) = 0;
    files.put("C:\\T.DB", bytes);
    const auto store = openStore(files);
    EXPECT_NE(faultsOf(*store), Rows{});
    EXPECT_EQ(rowsOf(*store).size(), 2000u);
    store->writer("T")->insert(std::array{whole(7)});
    store->commit();
    EXPECT_EQ(rowsOf(*store).back(), "7");
}

TEST(ParadoxDamage, filesOfTheWrongKindAreRefused)
{
    MemoryFileSystem files;
    openStore(files)->createTable(
        layoutOf({fieldDef("ID", FieldType::Long)}, {primaryDef({"ID"})}));
    files.put("C:\\P.DB", files.content("C:\\T.PX"));
    const auto store = openStore(files);
    EXPECT_EQ(errorOf([&] { store->layout("P"); }), 3274);
    files.put("C:\\T.PX", files.content("C:\\T.DB"));  // the tree is made anew by the next writer
    store->writer("T")->insert(std::array{whole(5)});
    store->commit();
    EXPECT_EQ(faultsOf(*store), Rows{});
}
