#include "ui/AppStyle.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

void applyAppStyle(QApplication& app) {
    app.setStyle(QStyleFactory::create("Fusion"));
    QPalette p;
    const QColor window(0x2b, 0x2b, 0x2b);
    const QColor base(0x23, 0x23, 0x23);
    const QColor button(0x3a, 0x3a, 0x3a);
    const QColor text(0xe6, 0xe6, 0xe6);
    const QColor disabled(0x7a, 0x7a, 0x7a);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, QColor(0x2f, 0x2f, 0x2f));
    p.setColor(QPalette::ToolTipBase, button);
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, QColor(0x8c, 0x8c, 0x8c));
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, button);
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, QColor(0xff, 0x6b, 0x6b));
    p.setColor(QPalette::Link, QColor(0x6a, 0xae, 0xf0));
    p.setColor(QPalette::Highlight, QColor(0x3d, 0x6f, 0xa8));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Light, QColor(0x4a, 0x4a, 0x4a));
    p.setColor(QPalette::Midlight, QColor(0x42, 0x42, 0x42));
    p.setColor(QPalette::Mid, QColor(0x30, 0x30, 0x30));
    p.setColor(QPalette::Dark, QColor(0x1e, 0x1e, 0x1e));
    p.setColor(QPalette::Shadow, QColor(0x10, 0x10, 0x10));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, disabled);
    p.setColor(QPalette::Disabled, QPalette::Button, QColor(0x33, 0x33, 0x33));
    app.setPalette(p);
}
