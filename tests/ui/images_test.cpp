#include "ui/images.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QSize>
#include <QString>

TEST(Images, the_resource_holds_every_picture_at_its_size) {
    zel::init_images();
    struct Case {
        const char* name;
        int width, height;
    };
    const Case cases[] = {
        {"gating_ready", 45, 45}, {"gating_closed", 45, 45}, {"gating_fault", 45, 45},
        {"record", 57, 57},       {"pause", 57, 57},         {"logo", 96, 96},
        {"banner", 480, 270},     {"check_pass", 32, 32},    {"check_fail", 32, 32},
        {"connected", 48, 32},    {"not_connected", 48, 32},
    };
    for (const auto& c : cases) {
        const QImage image(QStringLiteral(":/images/") + QString::fromLatin1(c.name));
        ASSERT_FALSE(image.isNull()) << c.name;
        EXPECT_EQ(image.size(), QSize(c.width, c.height)) << c.name;
    }
}
