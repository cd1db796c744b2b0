#include <Quorvel/QVLDebugWindowController.h>
#include <Quorvel/Quorvel.h>

#include <QApplication>

#include <gtk/gtk.h>

#include <filesystem>
#include <memory>

// A host of another toolkit: GTK runs the event loop, and the debug console lives in it. On Linux both toolkits, and the
// library, run on the default GLib main context, so nothing else is needed than an application object of Qt's.

namespace {

struct Host {
    std::shared_ptr<QVLQuorvel> engine;
    std::shared_ptr<QVLDebugWindowController> console;
};

void openConsole(GtkButton* /*button*/, gpointer data) {
    auto* const host = static_cast<Host*>(data);
    if (!host->console) {
        host->console = QVLDebugWindowController::initWithQuorvel(host->engine, nullptr);
    }
    host->console->showWindow();
}

void openWindow(GtkApplication* application, gpointer data) {
    GtkWidget* const window = gtk_application_window_new(application);
    GtkWidget* const button = gtk_button_new_with_label("Debug Console");
    gtk_widget_set_sensitive(button, QVLQuorvelEnvironment::sharedEnvironment()->debugToolsAvailable());
    g_signal_connect(button, "clicked", G_CALLBACK(openConsole), data);
    gtk_window_set_title(GTK_WINDOW(window), "A GTK host");
    gtk_window_set_child(GTK_WINDOW(window), button);
    gtk_window_present(GTK_WINDOW(window));
}

} // namespace

int main(int argc, char** argv) {
    const QApplication qtApplication(argc, argv);
    const std::string directory = std::string(g_get_user_data_dir()) + "/quorvel-gtk";
    std::filesystem::create_directories(directory);
    const auto& environment = QVLQuorvelEnvironment::sharedEnvironment();
    environment->setApplicationSupportDirectory(directory);

    Host host = {environment->quorvelForPreLogin(), nullptr};
    host.engine->start();
    host.engine->setInputs({{"appVersion", "4.4.2"}, {"plan", "free"}});

    GtkApplication* const application = gtk_application_new("org.quorvel.gtkhost", G_APPLICATION_DEFAULT_FLAGS);
    g_signal_connect(application, "activate", G_CALLBACK(openWindow), &host);
    const int status = g_application_run(G_APPLICATION(application), argc, argv);
    g_object_unref(application);
    host.console.reset();
    host.engine->stop();
    return status;
}
