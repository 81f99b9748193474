#include "app/panels/WeatherPanel.h"

#include "app/ChartView.h"
#include "app/Dialogs.h"
#include "app/FlowLayout.h"
#include "app/GribRequestDialog.h"
#include "app/Program.h"
#include "app/SettingRow.h"
#include "app/Style.h"
#include "app/Text.h"
#include "exchange/KMLExport.h"
#include "weather/GribKml.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSlider>
#include <QTimeZone>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cctype>
#include <utility>

namespace kelvox {

namespace {
QString timeText(GribTime time)
{
    const auto utc = QDateTime::fromSecsSinceEpoch(time.time_since_epoch().count(), Qt::UTC);
    const QLocale locale(QString::fromStdString(textCatalog().language()));
    return locale.toString(utc, QStringLiteral("ddd d MMM  HH:mm")) + QStringLiteral(" UTC");
}

QString fieldText(GribField field)
{
    std::string name(gribFieldName(field));
    name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
    return text("NSGrib" + name);
}

/// All that is switched on, for globe viewers. On a worker.
std::string placemarksOf(const GribSnapshot& shown, const std::stop_token& stop)
{
    const GribController& weather = shown.weather();
    const GribKml kml(shown.model());
    const GribContourOptions contours{.field = weather.contourField};
    std::string placemarks;
    const auto add = [&](bool isShown, auto&& text) {
        if (isShown && !stop.stop_requested())
            placemarks += text();
    };
    add(weather.showWind, [&] { return kml.wind(weather.markers); });
    add(weather.showCurrent, [&] { return kml.current(weather.markers); });
    add(weather.showWaves, [&] { return kml.waves(weather.markers); });
    add(weather.showContours, [&] { return kml.contours(contours); });
    add(weather.showContours, [&] { return kml.labels(contours); });
    return placemarks;
}
} // namespace

bool isWeatherFile(const std::filesystem::path& file)
{
    std::string ending = file.extension().string();
    std::ranges::transform(ending, ending.begin(), [](char c) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    });
    return ending == ".grb" || ending == ".grib" || ending == ".grb1" || ending == ".bz2";
}

WeatherPanel::WeatherPanel(ChartHost& host)
    : SidePanel(QStringLiteral("weather"), "NSWeather", QStringLiteral("weather"))
    , m_host(host)
{
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    buildFile();
    buildTime();
    buildSwitches();
    m_playTimer.setInterval(100);
    connect(&m_playTimer, &QTimer::timeout, this, [this] {
        Program& program = m_host.program();
        if (program.weather().tick(program.clock().monotonicSeconds())) {
            updateTime();
            emit program.weatherChanged();
        }
    });
    connect(&host.chart(), &ChartView::cursorMoved, this, [this] {
        if (isVisible())
            updateValues();
    });
    connect(&host.program(), &Program::weatherChanged, this, &WeatherPanel::updateTime);
    connect(&host.program(), &Program::unitsChanged, this, &WeatherPanel::updateValues);
    restyle();
    reload();
}

WeatherPanel::~WeatherPanel()
{
    // A large file must not hold up the end of the program.
    m_loading.request_stop();
    m_exporting.request_stop();
}

void WeatherPanel::buildFile()
{
    const Theme& theme = Theme::theme();
    auto* rows = static_cast<QVBoxLayout*>(layout());
    auto* buttons = new FlowLayout;
    const auto addButton = [&](const char* key, auto run) {
        auto* button = new QPushButton(text(key), this);
        button->setMinimumHeight(theme.px(40));
        connect(button, &QPushButton::clicked, this, run);
        buttons->add(button, FlowLayout::Grow::Yes);
        return button;
    };
    addButton("NSOpenWeather", [this] { chooseFile(); });
    addButton("NSRequestWeather", [this] {
        auto* dialog = new GribRequestDialog(m_host, &m_host.window());
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->show();
    });
    m_export = addButton("NSExportKml", [this] { exportKml(); });
    rows->addLayout(buttons);
    m_file = new QLabel(this);
    m_file->setWordWrap(true);
    m_file->setProperty("role", QStringLiteral("dim"));
    auto* fileRow = new QHBoxLayout;
    fileRow->addWidget(m_file, 1);
    m_close = new QToolButton(this);
    m_close->setFixedSize(theme.px(40), theme.px(40));
    m_close->setToolTip(text("NSCloseWeather"));
    m_close->setAccessibleName(text("NSCloseWeather"));
    connect(m_close, &QToolButton::clicked, this, &WeatherPanel::closeFile);
    fileRow->addWidget(m_close, 0, Qt::AlignTop);
    rows->addLayout(fileRow);
    auto* loading = new QHBoxLayout;
    m_progress = new QProgressBar(this);
    m_progress->setRange(0, 0);
    m_cancel = new QPushButton(text("NSCancel"), this);
    connect(m_cancel, &QPushButton::clicked, this, [this] {
        m_loading.request_stop();
        reload();
    });
    loading->addWidget(m_progress, 1);
    loading->addWidget(m_cancel);
    rows->addLayout(loading);
    m_progress->hide();
    m_cancel->hide();
}

void WeatherPanel::buildTime()
{
    const Theme& theme = Theme::theme();
    m_timeBox = new QWidget(this);
    auto* rows = new QVBoxLayout(m_timeBox);
    rows->setContentsMargins(0, 0, 0, 0);
    m_time = new QLabel(m_timeBox);
    m_time->setProperty("role", QStringLiteral("heading"));
    rows->addWidget(m_time);
    auto* row = new QHBoxLayout;
    const auto addButton = [&](const char* key, auto run) {
        auto* button = new QToolButton(m_timeBox);
        button->setFixedSize(theme.px(40), theme.px(40));
        button->setToolTip(text(key));
        button->setAccessibleName(text(key));
        connect(button, &QToolButton::clicked, this, run);
        row->addWidget(button);
        return button;
    };
    m_previous = addButton("NSPreviousForecast", [this] { stepBy(false); });
    m_play = addButton("NSPlay", [this] { setPlaying(!m_playTimer.isActive()); });
    m_play->setObjectName(QStringLiteral("weatherPlay"));
    m_next = addButton("NSNextForecast", [this] { stepBy(true); });
    m_slider = new QSlider(Qt::Horizontal, m_timeBox);
    m_slider->setAccessibleName(text("NSForecastTime"));
    m_slider->setMinimumHeight(theme.px(40));
    connect(m_slider, &QSlider::valueChanged, this, [this](int step) {
        Program& program = m_host.program();
        const auto dates = program.weather().forecastDates();
        if (step < 0 || step >= static_cast<int>(dates.size()))
            return;
        program.gribModel().setViewedDate(dates[static_cast<std::size_t>(step)]);
        updateTime();
        emit program.weatherChanged();
    });
    row->addWidget(m_slider, 1);
    rows->addLayout(row);
    m_values = new QLabel(m_timeBox);
    m_values->setWordWrap(true);
    m_values->setMinimumHeight(theme.px(76)); // nothing below jumps as values come and go
    m_values->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    rows->addWidget(m_values);
    layout()->addWidget(m_timeBox);
}

void WeatherPanel::buildSwitches()
{
    auto* area = new QScrollArea(this);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* page = new QWidget(area);
    auto* rows = new QVBoxLayout(page);
    rows->setContentsMargins(0, 0, Theme::theme().px(8), 0);
    rows->setSpacing(0);
    for (const char* key : {"gribShowWind", "gribShowCurrent", "gribShowWaves", "gribShowContours",
                            "gribContour", "gribMarkerStyle", "gribMarkerSize", "gribMarkerColor"})
        if (const auto* item = SettingsCatalog::catalog().find(key))
            rows->addWidget(
                new SettingRow(m_host.program(), *item, SettingRow::Detail::Compact, page));
    m_fields = new QTreeWidget(page);
    m_fields->setRootIsDecorated(false);
    m_fields->setAccessibleName(text("NSWeatherFields"));
    m_fields->setHeaderLabels({text("NSWeatherField"), text("NSWeatherLevel"),
                               text("NSWeatherTimes"), text("NSWeatherGrid")});
    m_fields->setMinimumHeight(Theme::theme().px(160));
    rows->addWidget(m_fields, 1);
    area->setWidget(page);
    static_cast<QVBoxLayout*>(layout())->addWidget(area, 1);
}

void WeatherPanel::restyle()
{
    const Theme& theme = Theme::theme();
    m_previous->setIcon(theme.icon(QStringLiteral("previous")));
    m_next->setIcon(theme.icon(QStringLiteral("next")));
    m_close->setIcon(theme.icon(QStringLiteral("close")));
    m_play->setIcon(
        theme.icon(m_playTimer.isActive() ? QStringLiteral("pause") : QStringLiteral("play")));
}

void WeatherPanel::chooseFile()
{
    const QString name =
        askForFile(m_host.window(), text("NSOpenWeather"), text("NSWeatherFilter"));
    if (!name.isEmpty())
        open(name.toStdString());
}

void WeatherPanel::open(const std::filesystem::path& file)
{
    setPlaying(false);
    m_loading.request_stop();
    m_loading = std::stop_source();
    m_file->setText(text("NSReadingFile", {QString::fromStdString(file.filename().string())}));
    m_progress->show();
    m_cancel->show();
    Program& program = m_host.program();
    const QPointer<WeatherPanel> panel = this;
    program.pool().post([file, panel, stop = m_loading.get_token(), &main = program.executor()] {
        // A model of its own: the program's is not for other threads.
        static const UnitsModel anyUnits; // only asked when values are shown
        auto model = std::make_shared<GribModel>(anyUnits);
        auto read = std::make_shared<Result<void>>(model->loadGrib(file, stop));
        main.post([file, panel, stop, model, read] {
            if (!panel || stop.stop_requested())
                return;
            Program& owner = panel->m_host.program();
            if (*read) {
                owner.gribModel().adopt(std::move(*model));
                owner.settings().set("weather.file", file.string());
            } else {
                panel->m_host.showNote(QString::fromStdString(read->error().message));
            }
            panel->reload();
            if (*read)
                panel->showExtent();
            emit owner.weatherChanged();
            emit panel->loaded();
        });
    });
}

void WeatherPanel::showExtent()
{
    // Only where the weather would not be seen: the view is the user's.
    Rect extent;
    for (const GribPoints* points : m_host.program().gribModel().points()) {
        const GribGrid& grid = points->grid();
        const double east = grid.longitudeIncrement * (grid.longitudeCount - 1);
        const double north = grid.latitudeIncrement * (grid.latitudeCount - 1);
        extent.include(Point{grid.first.longitude, grid.first.latitude});
        extent.include(Point{grid.first.longitude + east, grid.first.latitude + north});
    }
    const Position middle = m_host.chart().center();
    const bool isSeen = extent.contains({middle.longitude, middle.latitude})
        || extent.contains({middle.longitude + 360, middle.latitude});
    if (!extent.isEmpty() && !isSeen)
        m_host.chart().showBounds(extent);
}

void WeatherPanel::closeFile()
{
    setPlaying(false);
    m_host.program().gribModel().closeGrib();
    m_host.program().settings().remove("weather.file");
    reload();
    emit m_host.program().weatherChanged();
}

void WeatherPanel::reload()
{
    m_progress->hide();
    m_cancel->hide();
    const GribModel& model = m_host.program().gribModel();
    const GribController& weather = m_host.program().weather();
    const auto dates = weather.forecastDates();
    m_timeBox->setVisible(!dates.empty());
    m_export->setEnabled(!dates.empty());
    m_close->setVisible(!dates.empty());
    if (dates.empty()) {
        m_file->setText(text("NSNoWeather"));
    } else {
        QString words =
            QString::fromStdString(std::filesystem::path(model.fileName()).filename().string());
        for (const GribSkip& skip : model.skipped())
            words += QLatin1Char('\n')
                + countedText("NSWeatherSkipped", static_cast<std::size_t>(skip.messages),
                              {QString::fromStdString(skip.reason)});
        m_file->setText(words);
    }
    {
        const QSignalBlocker quiet(m_slider);
        m_slider->setRange(0, std::max(0, static_cast<int>(dates.size()) - 1));
        m_slider->setEnabled(dates.size() > 1);
    }
    m_fields->clear();
    for (const auto& row : weather.table())
        new QTreeWidgetItem(m_fields,
                            {fieldText(row.field), QString::fromStdString(row.level),
                             QString::number(row.times),
                             QStringLiteral("%1×%2, %3°")
                                 .arg(row.grid.longitudeCount)
                                 .arg(row.grid.latitudeCount)
                                 .arg(row.grid.longitudeIncrement, 0, 'g', 3)});
    m_fields->setVisible(!dates.empty());
    for (int column = 0; column < m_fields->columnCount(); ++column)
        m_fields->resizeColumnToContents(column);
    updateTime();
    updateValues();
}

void WeatherPanel::updateTime()
{
    const auto dates = m_host.program().weather().forecastDates();
    if (dates.empty())
        return;
    const GribTime viewed = m_host.program().gribModel().viewedDate();
    m_time->setText(timeText(viewed));
    const auto place = std::lower_bound(dates.begin(), dates.end(), viewed) - dates.begin();
    const QSignalBlocker quiet(m_slider);
    m_slider->setValue(static_cast<int>(place));
    m_previous->setEnabled(place > 0);
    m_next->setEnabled(place + 1 < static_cast<std::ptrdiff_t>(dates.size()));
    updateValues();
}

void WeatherPanel::updateValues()
{
    const auto position = m_host.chart().cursorPosition();
    QStringList lines;
    if (position)
        for (const std::string& line :
             m_host.program().weather().valuesAt(*position, textCatalog().strings()))
            lines << QString::fromStdString(line);
    m_values->setText(lines.isEmpty() ? text("NSWeatherPoint") : lines.join(QLatin1Char('\n')));
    setTextRole(*m_values, lines.isEmpty() ? TextRole::Dim : TextRole::Plain);
}

void WeatherPanel::stepBy(bool forward)
{
    setPlaying(false);
    GribController& weather = m_host.program().weather();
    if (forward ? weather.nextForecast() : weather.previousForecast()) {
        updateTime();
        emit m_host.program().weatherChanged();
    }
}

void WeatherPanel::setPlaying(bool on)
{
    if (on == m_playTimer.isActive())
        return;
    Program& program = m_host.program();
    if (on) {
        program.weather().play(program.clock().monotonicSeconds());
        m_playTimer.start();
    } else {
        program.weather().stop();
        m_playTimer.stop();
    }
    const QString words = text(on ? "NSPause" : "NSPlay");
    m_play->setToolTip(words);
    m_play->setAccessibleName(words);
    restyle();
}

void WeatherPanel::exportKml()
{
    if (std::exchange(m_isExporting, false)) {
        m_exporting.request_stop();
        m_export->setText(text("NSExportKml"));
        return;
    }
    const QString name = askForNewFile(m_host.window(), text("NSExportKml"),
                                       QStringLiteral("weather.kml"), text("NSKmlFilter"));
    if (name.isEmpty())
        return;
    Program& program = m_host.program();
    m_exporting = std::stop_source();
    m_isExporting = true;
    m_export->setText(text("NSCancel"));
    m_host.showNote(text("NSExporting"));
    program.pool().post([panel = QPointer(this), file = std::filesystem::path(name.toStdString()),
                         shown = std::make_shared<const GribSnapshot>(program.weather()),
                         writer = KMLExport(program.settings()), start = m_host.chart().center(),
                         stop = m_exporting.get_token(), &main = program.executor()] {
        const std::string placemarks = placemarksOf(*shown, stop);
        auto written =
            std::make_shared<Result<void>>(writer.exportPlacemarks(file, placemarks, start, stop));
        main.post([panel, written, stop] {
            if (!panel || stop.stop_requested())
                return;
            panel->m_isExporting = false;
            panel->m_export->setText(text("NSExportKml"));
            panel->m_host.showNote(*written ? text("NSExportComplete")
                                            : QString::fromStdString(written->error().message));
        });
    });
}

} // namespace kelvox
