#include <gtest/gtest.h>

#include <cmath>

#include "attributes/ax_attributes.h"
#include "platform/simulated/platform.h"

namespace quil {
namespace {

TEST(AxAttributes, WhatIsNoNumber) {
    SimulatedDesktop desktop;
    SimulatedPlatform platform(desktop);
    simulated::Window& window = desktop.application(100, "Notes").window("Main", {0, 0, 10, 10});
    const ElementRef element = axFocusedWindow(platform.accessibility(), 100);
    EXPECT_TRUE(axBounds(platform.accessibility(), element));
    for (const double impossible : {double{NAN}, double{INFINITY}, double{-INFINITY}}) {
        window.bounds({0, impossible, 1, 1});
        EXPECT_FALSE(axBounds(platform.accessibility(), element)) << impossible;
    }
    window.value(std::copysign(NAN, -1.0));
    EXPECT_EQ(axValueString(platform.accessibility(), element), "nan");
}

}  // namespace
}  // namespace quil
