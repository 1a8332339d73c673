#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/ViewModels/Results/ResultsViewModel.h"
#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Naming/BatchRenamer.h"

#include <QAbstractTableModel>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QTreeView>

#include <unordered_set>

namespace orvane::views {

using namespace design;

namespace {

constexpr int renameWidth = 620;
constexpr int previewHeight = 250;

class PreviewModel : public QAbstractTableModel {
  public:
    using QAbstractTableModel::QAbstractTableModel;

    void show(std::vector<BatchRenamer::PreviewRow> rows) {
        const bool isOther = rows.size() != rows_.size();
        if (isOther) beginResetModel();
        rows_ = std::move(rows);
        if (isOther)
            endResetModel();
        else if (!rows_.empty()) // so that the list stays scrolled to the same place
            Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, 1));
    }
    int rowCount(const QModelIndex& of = {}) const override {
        return of.isValid() ? 0 : static_cast<int>(rows_.size());
    }
    int columnCount(const QModelIndex& of = {}) const override { return of.isValid() ? 0 : 2; }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        if (role != Qt::DisplayRole || orientation != Qt::Horizontal) return {};
        return section == 0 ? QObject::tr("Before") : QObject::tr("After");
    }
    QVariant data(const QModelIndex& at, int role) const override {
        const BatchRenamer::PreviewRow& row = rows_.at(static_cast<std::size_t>(at.row()));
        if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
            return text(at.column() == 0 ? row.before : row.after);
        if (role == Qt::ForegroundRole && at.column() == 1 && row.before == row.after) return colours().facts;
        return {};
    }

  private:
    std::vector<BatchRenamer::PreviewRow> rows_;
};

class BatchRenameSheet : public Sheet {
  public:
    BatchRenameSheet(Desktop& desktop, QWidget* parent, const std::vector<UUID>& selected)
        : Sheet(tr("Rename Clips"), parent), desktop_(desktop), find_(field(tr("Find"))),
          replace_(field(tr("Replace with"))), prefix_(field(tr("Prefix"))), suffix_(field(tr("Suffix"))) {
        setMinimumWidth(renameWidth);
        auto* form = new QFormLayout;
        form->setHorizontalSpacing(space::medium);
        const auto row = [&](QWidget* control) { form->addRow(control->accessibleName(), control); };
        row(find_);
        row(replace_);
        padding_ = new SliderField(tr("Pad numbers to"), {0, BatchRenamer::mostPadDigits, 1}, tr("digits"),
                                   [this](int) { showPreview(); });
        padding_->setAccessibleName(tr("Pad numbers to"));
        padding_->setToolTip(tr("0 = no padding"));
        row(padding_);
        row(prefix_);
        row(suffix_);
        add(form);
        for (QLineEdit* one : {find_, replace_, prefix_, suffix_})
            connect(one, &QLineEdit::textChanged, this, [this] { showPreview(); });

        all_ = ResultsViewModel(desktop.controller()).order();
        selected_ = inOrder(selected);
        if (selected_.size() == all_.size()) selected_.clear();
        if (selected_.size() > 1) {
            auto* line = new QHBoxLayout;
            auto* scope = new SegmentedChoice(
                tr("Which clips"),
                {tr("Selected Clips  %1").arg(selected_.size()), tr("All Clips  %1").arg(all_.size())},
                [this](int chosen) {
                    isOfSelection_ = chosen == 0;
                    showPreview();
                });
            scope->choose(0);
            isOfSelection_ = true;
            line->addWidget(scope);
            line->addStretch(1);
            add(line);
        }
        auto* preview = new QTreeView;
        preview->setModel(preview_ = new PreviewModel(preview));
        preview->setAccessibleName(tr("Preview"));
        preview->setRootIsDecorated(false);
        preview->setUniformRowHeights(true);
        preview->setProperty("columns", true);
        preview->setSelectionMode(QAbstractItemView::NoSelection);
        preview->setMinimumHeight(previewHeight);
        preview->header()->setSectionResizeMode(QHeaderView::Stretch);
        add(preview, 1);
        if (selected_.size() < 2)
            add(facts(tr("All clips are renamed. To rename only some, select them in the list first.")));
        add(facts(tr("A clip that still has its camera's file name keeps it.")));

        clear_ = button(tr("Clear all manual names"), Weight::quiet);
        clear_->setToolTip(
            tr("Drop every per-clip manual rename, fall back to the auto-derived names from the "
               "chosen Source."));
        addAside(clear_);
        addClose(tr("Cancel"));
        apply_ = addButton(tr("Apply"), Weight::primary);
        connect(apply_, &QPushButton::clicked, this, [this] { apply(); });
        connect(clear_, &QPushButton::clicked, this,
                [this] { desktop_.run("clearAllManualNames", {}, [this](const JSON&) { accept(); }); });
        showPreview();
    }

  private:
    BatchRenamer renamer() const {
        BatchRenamer made;
        made.find = utf8(find_->text());
        made.replace = utf8(replace_->text());
        made.padDigits = padding_->value();
        made.prefix = utf8(prefix_->text());
        made.suffix = utf8(suffix_->text());
        return made;
    }
    /// All clips of the work that are in `clips`, in the order of the list.
    std::vector<UUID> inOrder(const std::vector<UUID>& clips) const {
        const std::unordered_set<UUID> chosen(clips.begin(), clips.end());
        std::vector<UUID> found;
        for (const UUID& clip : all_)
            if (chosen.contains(clip)) found.push_back(clip);
        return found;
    }
    const std::vector<UUID>& renamed() const { return isOfSelection_ ? selected_ : all_; }
    void showPreview() {
        const std::size_t count = renamed().size();
        apply_->setText(isOfSelection_ ? tr("Apply to %1 Clips").arg(count)
                        : count == 1   ? tr("Apply")
                                       : tr("Apply to All %1 Clips").arg(count));
        apply_->setEnabled(renamer().hasOperation());
        const SyncGroupList& clips = desktop_.controller().work().syncGroups();
        clear_->setEnabled(!BatchRenamer::manuallyNamed(clips).empty());
        // One preview at a time: while names are made, the latest input waits.
        isPreviewStale_ = true;
        if (!isPreviewMade_) makePreview();
    }
    void makePreview() {
        isPreviewMade_ = true;
        isPreviewStale_ = false;
        const platform::SettingsStore& store = desktop_.settings();
        BatchRenamer::Settings naming{store.get(settings::clipNamingSource),
                                      store.get(settings::customNamingPattern),
                                      store.get(settings::namingSeparator)};
        inBackground(
            this,
            [made = renamer(), groups = desktop_.controller().work().syncGroups(), clips = renamed(),
             naming = std::move(naming)] { return made.preview(groups, clips, naming); },
            [this](std::vector<BatchRenamer::PreviewRow> rows) {
                preview_->show(std::move(rows));
                isPreviewMade_ = false;
                if (isPreviewStale_) makePreview();
            });
    }
    void apply() {
        const BatchRenamer made = renamer();
        JSON arguments = JSON::object();
        arguments.set("find", made.find);
        arguments.set("replace", made.replace);
        arguments.set("padDigits", made.padDigits);
        arguments.set("prefix", made.prefix);
        arguments.set("suffix", made.suffix);
        if (isOfSelection_) {
            JSON ids = JSON::array();
            for (const UUID& clip : selected_) ids.append(clip.text());
            arguments.set("groupIDs", std::move(ids));
        }
        desktop_.run(
            "batchRename", std::move(arguments), [this](const JSON&) { accept(); },
            [this](const QString& why) { outcome().show(Signal::missing, why); });
    }

    Desktop& desktop_;
    QLineEdit* find_;
    QLineEdit* replace_;
    QLineEdit* prefix_;
    QLineEdit* suffix_;
    SliderField* padding_;
    PreviewModel* preview_;
    std::vector<UUID> all_, selected_; ///< in the order of the list
    bool isOfSelection_ = false;
    bool isPreviewMade_ = false;  ///< it is being made on another thread
    bool isPreviewStale_ = false; ///< the input has changed since the preview began
    QPushButton* clear_;
    QPushButton* apply_;
};

} // namespace

void showBatchRenamer(Desktop& desktop, QWidget* parent, const std::vector<UUID>& selected) {
    (new BatchRenameSheet(desktop, parent, selected))->present();
}

} // namespace orvane::views
