#include <Quorvel/QVLDebugWindowController.h>
#include <Quorvel/Quorvel.h>

#include <QApplication>
#include <QMainWindow>

#include <gtk/gtk.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>

// A host of another toolkit: GTK runs the event loop, and the debug console lives in it. On Linux both toolkits, and the
// library, run on the default GLib main context, so nothing else is needed than an application object of Qt's.

namespace {

struct Host {
    std::shared_ptr<QVLQuorvel> engine;
    std::shared_ptr<QVLDebugWindowController> console;
    GtkWidget* button = nullptr;
    bool isSmokeTest = false;
    int smokeTestStep = 0;
    bool hasFailed = false;
};

/// Opens the console as its user would, looks at it, closes it and the application.
gboolean smokeTestStep(gpointer data) {
    auto* const host = static_cast<Host*>(data);
    const int step = host->smokeTestStep++;
    if (step % 4 == 0) {
        g_signal_emit_by_name(host->button, "clicked");
    } else if (step % 4 == 2) {
        host->engine->setInputs({{"appVersion", "4.4.2"}, {"step", step}});
    } else if (step % 4 == 3) {
        host->hasFailed |= !host->console || !host->console->window()->isVisible();
        host->console->close();
    }
    constexpr int kLastStep = 12;
    if (step < kLastStep) {
        return G_SOURCE_CONTINUE;
    }
    host->hasFailed |= !host->engine->lastRunDate();
    g_application_quit(g_application_get_default());
    return G_SOURCE_REMOVE;
}

void openConsole(GtkButton* /*button*/, gpointer data) {
    auto* const host = static_cast<Host*>(data);
    if (!host->console) {
        host->console = QVLDebugWindowController::initWithQuorvel(host->engine, nullptr);
    }
    host->console->showWindow();
}

void openWindow(GtkApplication* application, gpointer data) {
    GtkWidget* const window = gtk_application_window_new(application);
    auto* const host = static_cast<Host*>(data);
    GtkWidget* const button = gtk_button_new_with_label("Debug Console");
    host->button = button;
    gtk_widget_set_sensitive(button, QVLQuorvelEnvironment::sharedEnvironment()->debugToolsAvailable());
    g_signal_connect(button, "clicked", G_CALLBACK(openConsole), data);
    gtk_window_set_title(GTK_WINDOW(window), "A GTK host");
    gtk_window_set_child(GTK_WINDOW(window), button);
    gtk_window_present(GTK_WINDOW(window));
    if (host->isSmokeTest) {
        constexpr guint kPause = 200;
        g_timeout_add(kPause, smokeTestStep, host);
    }
}

} // namespace

int main(int argc, char** argv) {
    const QApplication qtApplication(argc, argv);
    const std::string directory = std::string(g_get_user_data_dir()) + "/quorvel-gtk";
    std::filesystem::create_directories(directory);
    const auto& environment = QVLQuorvelEnvironment::sharedEnvironment();
    environment->setApplicationSupportDirectory(directory);

    Host host;
    host.engine = environment->quorvelForPreLogin();
    host.isSmokeTest = argc > 1 && std::string_view(argv[1]) == "--smoke-test";
    host.engine->start();
    host.engine->setInputs({{"appVersion", "4.4.2"}, {"plan", "free"}});

    GtkApplication* const application = gtk_application_new("org.quorvel.gtkhost", G_APPLICATION_DEFAULT_FLAGS);
    g_signal_connect(application, "activate", G_CALLBACK(openWindow), &host);
    const int status = g_application_run(G_APPLICATION(application), host.isSmokeTest ? 1 : argc, argv);
    g_object_unref(application);
    host.console.reset();
    host.engine->stop();
    return host.hasFailed ? EXIT_FAILURE : status;
}
