#pragma once
// How a long read tells its caller how far it has got. Called on the reading thread.

#include <QString>

class ProgressProtocol {
public:
    virtual ~ProgressProtocol() = default;
    // `fraction` (0...1) of the work done before the step named by `label` begins.
    virtual void progress(const QString& label, double fraction) = 0;
};
