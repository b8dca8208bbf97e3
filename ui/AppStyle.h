#pragma once
// The application's look: the Fusion style over a dark palette, the same on every desktop, which
// suits an editor where waveforms and artwork should stand out. Call once, before windows exist.

class QApplication;

void applyAppStyle(QApplication& app);
