#include "app/nav/PrintJob.h"

#include "app/ChartView.h"
#include "app/Dialogs.h"
#include "app/Text.h"
#include "app/Theme.h"
#include "app/nav/NavText.h"

#include <QDateTime>
#include <QDialog>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QPainter>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QVBoxLayout>

#include <array>
#include <cmath>

namespace kelvox {

namespace {
constexpr double pointsPerInch = 72;
constexpr int pdfResolution = 200; ///< dots per inch; a page of chart stays a few megabytes
constexpr int mostPrinterResolution = 300; ///< finer cannot be told apart, and costs memory

double planSpeed(Program& program)
{
    return program.settings().number("planSpeed", 5);
}

enum class Where { Nowhere, File, Paper };

Where askWhere(QWidget& window, const QString& question)
{
    QDialog dialog(&window);
    dialog.setWindowTitle(text("NSPrint"));
    auto* rows = new QVBoxLayout(&dialog);
    auto* words = new QLabel(question, &dialog);
    words->setWordWrap(true);
    rows->addWidget(words);
    auto where = Where::Nowhere;
    for (const auto& [key, answer] :
         {std::pair("NSSaveAsPDF", Where::File), std::pair("NSPrintOnPaper", Where::Paper),
          std::pair("NSCancel", Where::Nowhere)}) {
        auto* button = new QPushButton(text(key), &dialog);
        QObject::connect(button, &QPushButton::clicked, &dialog, [&, answer = answer] {
            where = answer;
            dialog.accept();
        });
        rows->addWidget(button);
    }
    dialog.setMinimumWidth(Theme::theme().px(320));
    dialog.exec();
    return where;
}
} // namespace

void PrintJob::askAndStart(NavActions& actions, const RoutePointer& route)
{
    QWidget* window = &actions.host().window();
    const QString name = route ? QString::fromStdString(route->name) : text("NSChart");
    const auto where = askWhere(
        *window, route ? text("NSPrintRouteQuestion", {name}) : text("NSPrintChartQuestion"));
    const auto layout = route ? QPageLayout::Portrait : QPageLayout::Landscape;
    if (where == Where::File) {
        const QString file =
            askForNewFile(*window, text("NSSaveAsPDF"), name + QStringLiteral(".pdf"),
                          QStringLiteral("PDF (*.pdf)"), QStringLiteral("pdf"));
        if (file.isEmpty())
            return;
        auto writer = std::make_unique<QPdfWriter>(file);
        writer->setTitle(name);
        writer->setCreator(QStringLiteral("Kelvox"));
        writer->setResolution(pdfResolution);
        writer->setPageOrientation(layout);
        start(actions, route, std::move(writer), file);
    } else if (where == Where::Paper) {
        auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
        printer->setResolution(std::min(printer->resolution(), mostPrinterResolution));
        printer->setDocName(name);
        printer->setPageOrientation(layout);
        QPrintDialog dialog(printer.get(), window);
        if (dialog.exec() == QDialog::Accepted) {
            const QString printerName = printer->printerName();
            start(actions, route, std::move(printer), printerName);
        }
    }
}

PrintJob* PrintJob::start(NavActions& actions, const RoutePointer& route,
                          std::unique_ptr<QPagedPaintDevice> device, const QString& what)
{
    return new PrintJob(actions, route, std::move(device), what);
}

PrintJob::PrintJob(NavActions& actions, RoutePointer route,
                   std::unique_ptr<QPagedPaintDevice> device, QString what)
    : QObject(&actions)
    , m_actions(actions)
    , m_route(std::move(route))
    , m_device(std::move(device))
    , m_what(std::move(what))
    , m_maker(actions.program().pool())
{
    Program& program = actions.program();
    if (m_route)
        m_plan = RoutePlan::of(*m_route, static_cast<float>(planSpeed(program)));
    // Paper is white whatever the screen shows.
    S52Render day(program.library());
    day.setColorTable(static_cast<int>(ColorScheme::Day) + 1);
    m_portrayal = day.portrayal();
    m_device->setPageMargins(QMarginsF(12, 12, 12, 12), QPageLayout::Millimeter);
    const int resolution = m_device->logicalDpiX();
    m_pixel = resolution / pointsPerInch;
    m_page = m_device->pageLayout().paintRectPixels(resolution);
    m_page.moveTopLeft({0, 0}); // the painter's origin lies within the margins
    m_titleHeight = qRound(m_pixel * (m_route ? 44 : 24));
    const int height = m_route ? m_page.height() * 45 / 100 : m_page.height() - m_titleHeight;
    auto scene = std::make_shared<ChartScene>(*actions.host().chart().scene());
    scene->portrayal = m_portrayal;
    scene->palette = PaletteScheme::Day;
    connect(&m_maker, &PictureMaker::pictureReady, this, &PrintJob::paint);
    m_maker.request(std::move(scene), frameFor({m_page.width(), height}));
    actions.host().showNote(text("NSPrinting"));
}

ViewFrame PrintJob::frameFor(QSize pixels) const
{
    const double pixelsPerPoint = m_device->logicalDpiX() / double(S57Controller::maximumDpi);
    const ChartView& chart = m_actions.host().chart();
    if (m_route) {
        Rect box;
        double before = 0;
        for (const RoutePlan::Row& row : m_plan.rows) {
            const Position at = row.waypoint->positionOnGPS();
            const double turn = box.isEmpty() ? 0 : std::round((before - at.longitude) / 360);
            before = at.longitude + 360 * turn;
            box.include(Point{before, at.latitude});
        }
        constexpr double aboutAMile = 1.0 / 60;
        if (!box.isEmpty())
            return ViewFrame::fitting(box.grownBy(std::max(box.width() * 0.1, aboutAMile / 4),
                                                  std::max(box.height() * 0.1, aboutAMile / 4)),
                                      pixels.width(), pixels.height(), pixelsPerPoint,
                                      S57Controller::maximumDpi);
    }
    // What the window shows, all of it; where the paper is longer, more.
    const double widgetWidth = std::max(chart.width(), 1);
    const double widgetHeight = std::max(chart.height(), 1);
    const double fit = std::min(pixels.width() / widgetWidth, pixels.height() / widgetHeight);
    return ViewFrame::at(chart.center(), chart.scale(), chart.rotation(), pixels.width(),
                         pixels.height(), fit, static_cast<unsigned>(chart.logicalDpiX()));
}

void PrintJob::paint(const ChartPicture& picture)
{
    QImage image = picture.image;
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(picture.frame.pixelsPerPoint, picture.frame.pixelsPerPoint);
        m_actions.host().chart().paintLayers(
            painter, picture.frame,
            {.portrayal = *m_portrayal, .medium = LayerLook::Medium::Paper});
    }
    m_actions.host().chart().update(); // the layers have learnt the paper's places
    QPainter painter;
    const bool begun = painter.begin(m_device.get());
    if (begun) {
        QFont font = painter.font();
        font.setPixelSize(qRound(m_pixel * 14));
        font.setBold(true);
        painter.setFont(font);
        painter.drawText(QRect(0, 0, m_page.width(), qRound(m_pixel * 20)),
                         Qt::AlignLeft | Qt::AlignVCenter,
                         m_route ? QString::fromStdString(m_route->name) : text("NSChart"));
        font.setPixelSize(qRound(m_pixel * 9));
        font.setBold(false);
        painter.setFont(font);
        const double onPaper = picture.frame.view.scale() * m_device->logicalDpiX()
            / (S57Controller::maximumDpi * picture.frame.pixelsPerPoint);
        const QString printed =
            QLocale().toString(QDateTime::currentDateTime(), QLocale::ShortFormat)
            + QStringLiteral("   1:%1   ").arg(QLocale().toString(qRound(onPaper / 100) * 100))
            + text("NSNotForNavigation");
        painter.drawText(QRect(0, 0, m_page.width(), qRound(m_pixel * 20)),
                         Qt::AlignRight | Qt::AlignVCenter, printed);
        if (m_route)
            painter.drawText(
                QRect(0, qRound(m_pixel * 20), m_page.width(), qRound(m_pixel * 18)),
                Qt::AlignLeft | Qt::AlignVCenter,
                text("NSPlanSummary",
                     {navtext::distance(m_plan.totalMiles()),
                      navtext::hours(m_plan.rows.empty() ? noValue
                                                         : double(m_plan.rows.back().totalHours)),
                      navtext::speed(planSpeed(m_actions.program()))}));
        painter.drawImage(QPoint(0, m_titleHeight), image);
        painter.setPen(QPen(Qt::black, std::max(1.0, m_pixel * 0.5)));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRect(QPoint(0, m_titleHeight), image.size()));
        if (m_route)
            paintTable(painter, m_titleHeight + image.height() + qRound(m_pixel * 12));
        painter.end();
    }
    m_actions.host().showNote(begun ? text("NSPrinted", {m_what})
                                    : text("NSCannotPrint", {m_what}));
    emit finished(begun);
    deleteLater();
}

void PrintJob::paintTable(QPainter& painter, int top)
{
    struct Column {
        const char* key;
        double share;
        Qt::Alignment alignment;
    };
    constexpr std::array<Column, 8> columns{{{"NSNumber", 0.05, Qt::AlignRight},
                                             {"NSWaypoint", 0.19, Qt::AlignLeft},
                                             {"NSPosition", 0.26, Qt::AlignLeft},
                                             {"NSBearing", 0.10, Qt::AlignRight},
                                             {"NSLegDistance", 0.11, Qt::AlignRight},
                                             {"NSTotalDistance", 0.11, Qt::AlignRight},
                                             {"NSLegTime", 0.07, Qt::AlignRight},
                                             {"NSTotalTime", 0.11, Qt::AlignRight}}};
    const int rowHeight = qRound(m_pixel * 15);
    const int gap = qRound(m_pixel * 3);
    QFont font = painter.font();
    font.setPixelSize(qRound(m_pixel * 8.5));
    int y = top;
    const auto drawRow = [&](const std::array<QString, 8>& cells) {
        double x = 0;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const double width = columns[i].share * m_page.width();
            const QRectF box(x + gap, y, width - 2 * gap, rowHeight);
            painter.drawText(box, columns[i].alignment | Qt::AlignVCenter,
                             painter.fontMetrics().elidedText(cells[i], Qt::ElideRight,
                                                              static_cast<int>(box.width())));
            x += width;
        }
        y += rowHeight;
    };
    const auto drawHeading = [&] {
        font.setBold(true);
        painter.setFont(font);
        painter.setPen(Qt::black);
        std::array<QString, 8> cells;
        for (std::size_t i = 0; i < columns.size(); ++i)
            cells[i] = text(columns[i].key);
        drawRow(cells);
        painter.drawLine(0, y, m_page.width(), y);
        font.setBold(false);
        painter.setFont(font);
    };
    drawHeading();
    int number = 0;
    Program& program = m_actions.program();
    for (const RoutePlan::Row& row : m_plan.rows) {
        if (y + rowHeight > m_page.height()) {
            m_device->newPage();
            y = 0;
            drawHeading();
        }
        ++number;
        drawRow({QString::number(number), QString::fromStdString(row.waypoint->name),
                 navtext::position(row.waypoint->positionOnGPS()),
                 number == 1 ? QString() : navtext::bearing(program, row.bearingTrue),
                 number == 1 ? QString() : navtext::distance(row.legMiles),
                 navtext::distance(row.totalMiles),
                 number == 1 ? QString() : navtext::hours(row.legHours),
                 number == 1 ? QString() : navtext::hours(row.totalHours)});
    }
}

} // namespace kelvox
