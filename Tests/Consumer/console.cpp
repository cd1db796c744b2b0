#include <Quorvel/QVLDebugWindowController.h>
#include <Quorvel/Quorvel.h>

#include <QApplication>
#include <QMainWindow>

#include <iostream>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const auto controller = QVLDebugWindowController::initWithQuorvel(QVLQuorvel::init(), nullptr);
    std::cout << "Debug console: " << controller->window()->windowTitle().toStdString() << '\n';
}
