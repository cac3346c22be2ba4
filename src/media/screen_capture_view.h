#pragma once

#include "views/quick_view.h"

#include <QString>

#include <mutex>

namespace marlune {

/**
 * The view that shows a screen. Its scene, the component "ScreenCapture", binds to its properties.
 */
class ScreenCaptureView : public QuickView {
    Q_OBJECT
    Q_PROPERTY(uint active READ active WRITE write_active NOTIFY activeChanged)
    Q_PROPERTY(QString physical_screen_hint READ physical_screen_hint WRITE
                   write_physical_screen_hint NOTIFY physical_screen_hintChanged)

public:
    ScreenCaptureView();
    ~ScreenCaptureView() override;

    void prepare_context(QQmlContext* root_context) override;
    void post_setup(QQmlEngine*, QObject*) override {}
    void before_reset() override {}

    bool active() const { return active_; }
    void set_active(bool active);

    /**
     * Callable on any thread, like its setter. The setter emits the signal on the calling thread.
     */
    QString physical_screen_hint() const;
    void set_physical_screen_hint(const QString& hint);

signals:
    void activeChanged();
    void physical_screen_hintChanged();

private:
    void write_active(uint active);
    void write_physical_screen_hint(const QString& hint);

    bool active_ = true;
    mutable std::mutex hint_mutex_;
    QString physical_screen_hint_ = QStringLiteral("-1");
};

}  // namespace marlune
