// The members of the internal classes that QML, pages and Qt call by name or by number, in their
// order. They are listed in meta_objects.txt; every change to it is a change of an interface.

#include "binding/context_object.h"
#include "binding/manager.h"
#include "binding/method_info.h"
#include "binding/property_info.h"
#include "media/camera_view.h"
#include "media/frame_filter.h"
#include "media/screen_capture_view.h"
#include "media/screen_recorder.h"
#include "media/video_view.h"
#include "runtime/context.h"
#include "views/quick_view.h"
#include "web/page_gate.h"
#include "web/page_watch.h"
#include "web/published_objects.h"
#include "web/web_view.h"

#include <QMetaMethod>
#include <QMetaProperty>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace marlune::test {

namespace {

const QMetaObject* const CLASSES[] = {
    &MarluneCtx::staticMetaObject,
    &View::staticMetaObject,
    &QuickView::staticMetaObject,
    &WebView::staticMetaObject,
    &PageGate::staticMetaObject,
    &PageWatch::staticMetaObject,
    &PublishedObjects::staticMetaObject,
    &VideoView::staticMetaObject,
    &CameraView::staticMetaObject,
    &FrameFilter::staticMetaObject,
    &ScreenCaptureView::staticMetaObject,
    &ScreenRecorder::staticMetaObject,
    &db::DataBindingContextManager::staticMetaObject,
    &db::DBAbstractContextObject::staticMetaObject,
    &db::DBMethodInfo::staticMetaObject,
    &db::DBPropertyInfo::staticMetaObject,
};

void describe(std::ostream& out, const QMetaProperty& property)
{
    const std::pair<bool, const char*> traits[] = {
        {property.isReadable(), " read"},
        {property.isWritable(), " write"},
        {property.isConstant(), " constant"},
        {!property.isStored(), " not stored"},
        {!property.isScriptable(), " not scriptable"},
        {!property.isDesignable(), " not designable"},
    };
    out << "  property " << property.typeName() << ' ' << property.name() << ':';
    for (const auto& [holds, trait] : traits)
        out << (holds ? trait : "");
    if (property.hasNotifySignal())
        out << ", " << property.notifySignal().name().constData();
    out << '\n';
}

void describe(std::ostream& out, const QMetaMethod& method)
{
    constexpr const char* accesses[] = {"private ", "protected ", ""};
    constexpr const char* types[] = {"method ", "signal ", "slot ", "constructor "};
    const QList<QByteArray> parameter_types = method.parameterTypes();
    const QList<QByteArray> parameter_names = method.parameterNames();
    out << "  " << accesses[method.access()] << types[method.methodType()] << method.typeName()
        << ' ' << method.name().constData() << '(';
    for (qsizetype i = 0; i < parameter_types.size(); ++i) {
        out << (i > 0 ? ", " : "") << parameter_types[i].constData();
        if (!parameter_names[i].isEmpty())
            out << ' ' << parameter_names[i].constData();
    }
    out << ")\n";
}

void describe(std::ostream& out, const QMetaObject& meta)
{
    out << meta.className() << " of " << meta.superClass()->className() << '\n';
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i)
        describe(out, meta.property(i));
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        describe(out, meta.method(i));
}

}  // namespace

TEST(MetaObjects, have_the_members_that_the_file_lists_in_their_order)
{
    std::stringstream actual;
    for (const QMetaObject* const meta : CLASSES)
        describe(actual, *meta);

    const std::filesystem::path made = std::filesystem::absolute("meta_objects.txt");
    std::ofstream(made) << actual.str();
    std::ifstream file(MARLUNE_META_OBJECTS);
    ASSERT_TRUE(file) << "cannot read " << MARLUNE_META_OBJECTS;
    std::string class_name;
    for (int number = 1; file || actual; ++number) {
        std::string expected_line, line;
        std::getline(file, expected_line);
        std::getline(actual, line);
        if (!line.starts_with(' '))
            class_name = line;
        ASSERT_EQ(line, expected_line)
            << "in line " << number << ", in " << class_name
            << "\nIf this change of an interface is intended, update the file and review its diff:"
            << "\n  cp " << made.string() << ' ' << MARLUNE_META_OBJECTS;
    }
}

}  // namespace marlune::test
