#pragma once

class ZApplication;

// The application of a test program that lists offscreen_application.cpp: English, light, without
// a display. It lives while the tests run.
ZApplication& application();
