#pragma once

namespace rillbook {

enum MousePointerConstants : int { vbDefault = 0, vbHourglass = 11 };

class Screen {
public:
    virtual ~Screen() = default;
    // 0 normal, 11 hourglass, for the whole program.
    virtual void SetMousePointer(int pointer) = 0;
    virtual int MousePointer() const = 0;
};

// Shows the hourglass, and at the end of its life, also by an exception, the pointer that was shown
// before: within the life of another one the hourglass stays.
class Hourglass {
public:
    Hourglass();
    ~Hourglass();
    Hourglass(const Hourglass&) = delete;
    Hourglass& operator=(const Hourglass&) = delete;

private:
    const bool isOutermost_;
};

}  // namespace rillbook
