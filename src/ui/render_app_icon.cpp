// SPDX-License-Identifier: MIT
// Build step: draws the program's icon from its vector source into the PNG the window ships with.
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <cstdio>

int main(int argc, char *argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: render_app_icon SOURCE.svg OUT.png SIZE\n");
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    QSvgRenderer renderer(QString::fromLocal8Bit(argv[1]));
    const int size = QByteArray(argv[3]).toInt();
    if (!renderer.isValid() || size <= 0) {
        std::fprintf(stderr, "render_app_icon: cannot read %s\n", argv[1]);
        return 1;
    }
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter);
    painter.end();
    if (!image.save(QString::fromLocal8Bit(argv[2]))) {
        std::fprintf(stderr, "render_app_icon: cannot write %s\n", argv[2]);
        return 1;
    }
    return 0;
}
