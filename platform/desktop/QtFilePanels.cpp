#include "platform/desktop/QtFilePanels.h"

#include <QApplication>
#include <QDir>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QWindow>
#include <algorithm>
#include <filesystem>
#include <utility>

#include "platform/text/LocalizedText.h"

namespace zeb {
namespace {

/// Usual file names of videos. The filter "all files" shows the others.
constexpr const char* videoPatterns =
    "*.3gp *.asf *.avi *.dv *.flv *.gif *.m2ts *.m2v *.m4v *.mkv *.mov *.mp4 *.mpeg *.mpg *.mts *.mxf *.ogg "
    "*.ogv *.ts *.vob *.webm *.wmv";

QString filterOf(const QString& name, const QString& patterns) {
    return name + " (" + patterns + ")";
}

QString textOf(std::string_view key) {
    return QString::fromStdString(localizedText(key));
}

QStringList filtersOf(const std::vector<ContentType>& types) {
    QStringList patterns;
    bool offersVideos = false;
    bool offersAll = false;
    for (const ContentType& type : types) {
        switch (type.kind) {
            case ContentType::movie:
            case ContentType::video:
                offersVideos = true;
                break;
            case ContentType::data:
                offersAll = true;
                break;
            case ContentType::filenameExtension:
                patterns << "*." + QString::fromStdString(type.extension);
                break;
        }
    }
    if (offersVideos) patterns << QString(videoPatterns).split(' ');
    patterns.removeDuplicates();
    // Match the patterns in any case.
    for (const QString& pattern : QStringList(patterns))
        patterns << pattern.toUpper();

    QStringList filters;
    if (!patterns.isEmpty())
        filters << filterOf(textOf(offersVideos ? "panel_videos" : "panel_movies"), patterns.join(' '));
    if (offersVideos || offersAll || filters.isEmpty()) filters << filterOf(textOf("panel_all_files"), "*");
    return filters;
}

std::unique_ptr<QFileDialog> makeDialog(const std::string& title, const std::string& folder,
                                        const std::vector<ContentType>& types) {
    auto dialog = std::make_unique<QFileDialog>();
    dialog->setWindowTitle(QString::fromStdString(title));
    dialog->setDirectory(folder.empty() ? QDir::homePath() : QString::fromStdString(folder));
    dialog->setNameFilters(filtersOf(types));
    dialog->setOption(QFileDialog::HideNameFilterDetails);
    // Keep player windows usable. Set this before `open`: by then the dialog's window exists and keeps its
    // modality.
    dialog->setWindowModality(Qt::WindowModal);
    return dialog;
}

/// Appends the extension. Dialogs take the text after any dot for an extension, but "Dr. No" must become
/// "Dr. No.zeb".
std::string withExtension(const std::string& path, const std::vector<ContentType>& types) {
    const ContentType* wanted = nullptr;
    for (const ContentType& type : types) {
        if (type.kind != ContentType::filenameExtension) return path;
        if (QString::fromStdString(path).endsWith("." + QString::fromStdString(type.extension),
                                                  Qt::CaseInsensitive))
            return path;
        if (!wanted) wanted = &type;
    }
    return wanted ? path + '.' + wanted->extension : path;
}

}  // namespace

QtFilePanels::QtFilePanels() = default;

QtFilePanels::~QtFilePanels() = default;

void QtFilePanels::setSurroundings(std::function<QWindow*()> parent, std::function<QPalette()> palette) {
    m_parent = std::move(parent);
    m_palette = std::move(palette);
}

void QtFilePanels::open(const OpenPanel& panel, Answer answer) {
    auto dialog = makeDialog(panel.title, panel.folder, panel.contentTypes);
    dialog->setFileMode(QFileDialog::ExistingFile);
    show(std::move(dialog), std::move(answer));
}

void QtFilePanels::save(const SavePanel& panel, Answer answer) {
    auto dialog = makeDialog(panel.title, panel.folder, panel.contentTypes);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    for (const ContentType& type : panel.contentTypes) {
        if (type.kind == ContentType::filenameExtension)
            dialog->setDefaultSuffix(QString::fromStdString(type.extension));
    }
    dialog->selectFile(QString::fromStdString(panel.proposedName));
    show(std::move(dialog), [this, panel,
                             answer = std::move(answer)](const std::optional<std::string>& path) {
        const std::string file = path ? withExtension(*path, panel.contentTypes) : "";
        std::error_code ignored;
        if (path && file != *path && std::filesystem::exists(file, ignored)) {
            // The added extension names an existing file. Reopen the panel so that it confirms overwriting.
            const std::filesystem::path place(file);
            save({panel.title, place.parent_path().string(), place.filename().string(), panel.contentTypes},
                 answer);
        } else {
            answer(path ? std::optional(file) : std::nullopt);
        }
    });
}

void QtFilePanels::show(std::unique_ptr<QFileDialog> dialog, Answer answer) {
    if (m_dialog) {
        QTimer::singleShot(0, qApp, [answer = std::move(answer)] { answer(std::nullopt); });
        return;
    }
    m_dialog = std::move(dialog);
    const QPointer<QWindow> parent = m_parent ? m_parent() : nullptr;
    QObject::connect(m_dialog.get(), &QDialog::finished, qApp,
                     [this, parent, answer = std::move(answer)](int result) {
                         const QStringList files = m_dialog->selectedFiles();
                         std::optional<std::string> path;
                         if (result == QDialog::Accepted && !files.isEmpty())
                             path = files.first().toStdString();
                         // The dialog itself sends this signal, so delete it later.
                         m_dialog.release()->deleteLater();
                         // Show the window again if it was hidden while the panel was open: it shows the
                         // result.
                         if (path && parent) parent->setVisible(true);
                         answer(path);
                     });
    if (m_palette) m_dialog->setPalette(m_palette());
    m_dialog->winId();  // creates the window for the next line
    if (parent) m_dialog->windowHandle()->setTransientParent(parent);
    m_dialog->open();
}

}  // namespace zeb
