#include "windows/file_list_model.h"

#include <algorithm>

#include <QMimeData>
#include <QPointer>
#include <QUrl>

#include "core/attempt.h"
#include "core/text.h"
#include "platform/host.h"
#include "platform/paths.h"
#include "windows/file_words.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

QString joined(const QString& folder, const QString& name)
{
    return folder.endsWith(u'\\') ? folder + name : folder + u'\\' + name;
}

}  // namespace

FileListModel::FileListModel(QObject* parent) : QAbstractTableModel(parent)
{
    reader_.setMaxThreadCount(1);
}

FileListModel::~FileListModel()
{
    ++reading_;
    reader_.clear();
    reader_.waitForDone();
}

void FileListModel::setFolder(const QString& folder)
{
    folder_ = folder;
    beginResetModel();
    all_.clear();
    shown_.clear();
    shownFiles_ = hiddenFiles_ = 0;
    failure_.clear();
    endResetModel();
    startReading();
}

void FileListModel::refresh()
{
    startReading();
}

void FileListModel::startReading()
{
    const quint64 reading = ++reading_;
    reader_.clear();
    loading_ = !folder_.isEmpty();
    if (!loading_) {
        emit filled();
        return;
    }
    // A drive's root is listed with its backslash, a folder without.
    const std::string asked = (folder_.endsWith(u':') ? folder_ + u'\\' : folder_).toStdString();
    FileSystem* files = host().files;
    reader_.start([this, reading, asked, files] {
        std::vector<FileInfo> found;
        const Outcome read = attempt([&] { found = files->list(asked); });
        QMetaObject::invokeMethod(
            this,
            [this, reading, found = std::move(found), failure = read.description] {
                take(reading, found, failure);
            },
            Qt::QueuedConnection);
    });
}

void FileListModel::take(quint64 reading, std::vector<FileInfo> files, const QString& failure)
{
    if (reading != reading_)
        return;
    loading_ = false;
    failure_ = failure;
    all_ = std::move(files);
    arrange();
    emit filled();
}

void FileListModel::setPattern(const QString& pattern)
{
    pattern_ = pattern;
    patterns_.clear();
    for (const QString& one : pattern.split(u';', Qt::SkipEmptyParts))
        patterns_.push_back(one.trimmed().toStdString());
    arrange();
    emit filled();
}

bool FileListModel::passes(const FileInfo& file) const
{
    if (file.hidden)
        return false;
    return file.folder || std::any_of(patterns_.begin(), patterns_.end(), [&](const auto& one) {
               return paths::matches(file.name, one);
           });
}

void FileListModel::arrange()
{
    emit arranging();
    beginResetModel();
    shown_.clear();
    shownFiles_ = hiddenFiles_ = 0;
    for (const FileInfo& file : all_) {
        const bool shown = passes(file);
        if (!file.folder && !file.hidden)
            ++(shown ? shownFiles_ : hiddenFiles_);
        if (shown)
            shown_.push_back({file, QString::fromStdString(file.name),
                              QString::fromStdString(paths::foldName(file.name))});
    }
    const auto before = [this](const Entry& a, const Entry& b) {
        switch (sortColumn_) {
        case Size:
            if (a.file.size != b.file.size)
                return a.file.size < b.file.size;
            break;
        case Modified:
            if (a.file.modified != b.file.modified)
                return a.file.modified < b.file.modified;
            break;
        case Kind: {
            const auto one = paths::foldName(paths::extension(a.file.name));
            const auto other = paths::foldName(paths::extension(b.file.name));
            if (one != other)
                return one < other;
            break;
        }
        default:
            break;
        }
        return a.folded < b.folded;
    };
    const auto files = std::stable_partition(shown_.begin(), shown_.end(),
                                             [](const Entry& e) { return e.file.folder; });
    const auto order = [&](auto first, auto last) {
        std::sort(first, last, [&](const Entry& a, const Entry& b) {
            return order_ == Qt::AscendingOrder ? before(a, b) : before(b, a);
        });
    };
    order(shown_.begin(), files);
    order(files, shown_.end());
    endResetModel();
}

void FileListModel::sort(int column, Qt::SortOrder order)
{
    if (column < 0)
        return;
    sortColumn_ = column;
    order_ = order;
    arrange();
    emit filled();
}

QString FileListModel::path(const QModelIndex& index) const
{
    if (!index.isValid())
        return {};
    return joined(folder_, shown_[static_cast<std::size_t>(index.row())].name);
}

bool FileListModel::isFolder(const QModelIndex& index) const
{
    return index.isValid() && shown_[static_cast<std::size_t>(index.row())].file.folder;
}

QModelIndex FileListModel::indexOf(const QString& path) const
{
    for (std::size_t i = 0; i < shown_.size(); ++i)
        if (paths::sameName(joined(folder_, shown_[i].name).toStdString(), path.toStdString()))
            return index(static_cast<int>(i), Name);
    return {};
}

int FileListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

int FileListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QIcon FileListModel::iconOf(const Entry& entry) const
{
    const QString extension =
        QString::fromStdString(std::string(paths::extension(entry.file.name))).toUpper();
    const QString key = entry.file.folder ? u"\\"_s : extension;
    auto known = icons_.find(key);
    if (known == icons_.end())
        known = icons_.insert(key, fileKindIcon(extension, entry.file.folder));
    return *known;
}

QVariant FileListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const Entry& entry = shown_[static_cast<std::size_t>(index.row())];
    if (role == Qt::DecorationRole && index.column() == Name)
        return iconOf(entry);
    if (role == Qt::TextAlignmentRole && index.column() == Size)
        return QVariant::fromValue(Qt::Alignment(Qt::AlignRight | Qt::AlignVCenter));
    if (role == Qt::ToolTipRole && index.column() == Name)
        return joined(folder_, entry.name);
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return {};
    const QString extension =
        QString::fromStdString(std::string(paths::extension(entry.file.name)));
    switch (index.column()) {
    case Name:
        return entry.name;
    case Size:
        return entry.file.folder ? QString() : fileSizeText(entry.file.size);
    case Kind:
        return fileKindText(extension.toUpper(), entry.file.folder);
    case Modified:
        return fileTimeText(entry.file.modified);
    default:
        return {};
    }
}

QVariant FileListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(
            Qt::Alignment((section == Size ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter));
    if (role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Name:
        return tr("Name");
    case Size:
        return tr("Size");
    case Kind:
        return tr("Type");
    case Modified:
        return tr("Modified");
    default:
        return {};
    }
}

Qt::ItemFlags FileListModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled |
           Qt::ItemNeverHasChildren;
}

QStringList FileListModel::mimeTypes() const
{
    return {u"text/uri-list"_s};
}

QMimeData* FileListModel::mimeData(const QModelIndexList& indexes) const
{
    QList<QUrl> urls;
    for (const QModelIndex& each : indexes) {
        if (each.column() != Name || !host().paths)
            continue;
        attempt([&] {  // another program reads it: the native path
            urls << QUrl::fromLocalFile(
                QString::fromStdString(host().paths->toNative(path(each).toStdString())));
        });
    }
    auto* data = new QMimeData;
    data->setUrls(urls);
    return data;
}

}  // namespace velnor
