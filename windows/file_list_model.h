// windows/file_list_model.h - the files of one folder that a filter passes, folders first.
//
// The folder is read beside the window's own work, so that a slow or a full one stops nobody; what
// arrives for a folder that was left meanwhile is dropped. Sorting and filtering are done here on
// plain rows: no proxy.
#pragma once

#include <vector>

#include <QAbstractTableModel>
#include <QHash>
#include <QIcon>
#include <QStringList>
#include <QThreadPool>

#include "platform/file_system.h"

namespace velnor {

class FileListModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { Name, Size, Kind, Modified, ColumnCount };

    explicit FileListModel(QObject* parent = nullptr);
    ~FileListModel() override;

    /// Shows a folder ("C:\data", a drive as "C:"); empty: nothing.
    void setFolder(const QString& folder);
    const QString& folder() const { return folder_; }
    /// Reads the folder again.
    void refresh();
    /// "*.DBF;*.DB": a file is shown when one of them fits.
    void setPattern(const QString& pattern);
    const QString& pattern() const { return pattern_; }

    bool loading() const { return loading_; }
    /// Why the folder could not be read; empty when it could.
    const QString& failure() const { return failure_; }
    /// The rows there are, and how many files the filter left out.
    int shownFiles() const { return shownFiles_; }
    int hiddenFiles() const { return hiddenFiles_; }

    QString path(const QModelIndex& index) const;
    bool isFolder(const QModelIndex& index) const;
    QModelIndex indexOf(const QString& path) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    Qt::DropActions supportedDragActions() const override { return Qt::CopyAction; }

signals:
    /// The rows are about to be put in a new order: what is current is asked for now.
    void arranging();
    /// The folder has been read, or could not be.
    void filled();

private:
    struct Entry {
        FileInfo file;
        QString name;
        QString folded;  ///< what sorting by name compares
    };

    void startReading();
    void take(quint64 reading, std::vector<FileInfo> files, const QString& failure);
    bool passes(const FileInfo& file) const;
    void arrange();
    QIcon iconOf(const Entry& entry) const;

    QThreadPool reader_;
    quint64 reading_ = 0;  ///< of the folder asked for last
    QString folder_;
    QString pattern_ = QStringLiteral("*.*");
    std::vector<std::string> patterns_{"*.*"};
    QString failure_;
    bool loading_ = false;
    std::vector<FileInfo> all_;
    std::vector<Entry> shown_;
    int shownFiles_ = 0;
    int hiddenFiles_ = 0;
    int sortColumn_ = Name;
    Qt::SortOrder order_ = Qt::AscendingOrder;
    mutable QHash<QString, QIcon> icons_;
};

}  // namespace velnor
