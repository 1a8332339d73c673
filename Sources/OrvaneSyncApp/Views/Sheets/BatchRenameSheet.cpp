#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Naming/BatchRenamer.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QFormLayout>
#include <QHeaderView>
#include <QTreeWidget>

namespace orvane::views {

using namespace design;

namespace {

constexpr int renameWidth = 620;
constexpr int previewHeight = 250;

class BatchRenameSheet : public Sheet {
  public:
    BatchRenameSheet(Desktop& desktop, QWidget* parent)
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

        preview_ = new QTreeWidget;
        preview_->setAccessibleName(tr("Preview"));
        preview_->setHeaderLabels({tr("Before"), tr("After")});
        preview_->setRootIsDecorated(false);
        preview_->setProperty("columns", true);
        preview_->setSelectionMode(QAbstractItemView::NoSelection);
        preview_->setMinimumHeight(previewHeight);
        preview_->header()->setSectionResizeMode(QHeaderView::Stretch);
        add(preview_, 1);
        const auto clips = desktop.controller().work().syncGroups().size();
        const QString all = translatedSentence(counted(clips, "clip", "clips"));
        add(facts(tr("All of the work is renamed (%1), whatever is selected.").arg(all)));
        add(facts(tr("A clip that still has its camera's file name keeps it.")));

        clear_ = button(tr("Clear all manual names"), Weight::quiet);
        clear_->setToolTip(
            tr("Drop every per-clip manual rename, fall back to the auto-derived names from the "
               "chosen Source."));
        addAside(clear_);
        addClose(tr("Cancel"));
        apply_ =
            addButton(clips == 1 ? tr("Apply") : tr("Apply to All %1 Clips").arg(clips), Weight::primary);
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
    void showPreview() {
        const platform::SettingsStore& store = desktop_.settings();
        const BatchRenamer made = renamer();
        const auto& clips = desktop_.controller().work().syncGroups();
        const auto preview = made.previewSample(clips, {store.get(settings::clipNamingSource),
                                                        store.get(settings::customNamingPattern),
                                                        store.get(settings::namingSeparator)});
        preview_->clear();
        for (const auto& row : preview.rows) {
            auto* item = new QTreeWidgetItem(preview_, {text(row.before), text(row.after)});
            const bool changes = row.before != row.after;
            item->setForeground(1, changes ? colours().text : colours().facts);
            item->setToolTip(0, text(row.before));
            item->setToolTip(1, text(row.after));
        }
        if (!preview.remainder.empty()) {
            auto* more = new QTreeWidgetItem(preview_, {translatedSentence(preview.remainder)});
            more->setForeground(0, colours().facts);
        }
        apply_->setEnabled(made.hasOperation());
        clear_->setEnabled(!BatchRenamer::manuallyNamed(clips).empty());
    }
    void apply() {
        const BatchRenamer made = renamer();
        JSON arguments = JSON::object();
        arguments.set("find", made.find);
        arguments.set("replace", made.replace);
        arguments.set("padDigits", made.padDigits);
        arguments.set("prefix", made.prefix);
        arguments.set("suffix", made.suffix);
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
    QTreeWidget* preview_;
    QPushButton* clear_;
    QPushButton* apply_;
};

} // namespace

void showBatchRenamer(Desktop& desktop, QWidget* parent) {
    (new BatchRenameSheet(desktop, parent))->present();
}

} // namespace orvane::views
