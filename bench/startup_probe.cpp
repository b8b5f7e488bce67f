// Measures how long a program takes from being started to showing a window that is
// ready for typing: mapped and painted. (The keyboard focus is the window manager's to
// give; on a bare Xvfb it follows the pointer. The application has put its focus in
// the label text before the window is mapped.) Runs on the X display in DISPLAY
// (bench/startup runs it under Xvfb). Each program is started once
// to warm the caches, then RUNS times; the last line on stdout is the result:
//   <name> median_ms=M min_ms=A max_ms=B runs=N
//
// Usage: startup-probe RUNS PROGRAM [PROGRAM...]

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

namespace {

using Clock = std::chrono::steady_clock;

template <typename T> using Reply = std::unique_ptr<T, decltype(&std::free)>;

template <typename T> Reply<T> reply(T* pointer)
{
    return Reply<T>(pointer, &std::free);
}

pid_t startProgram(const char* program)
{
    const pid_t child = fork();
    if (child == 0) {
        execl(program, program, static_cast<char*>(nullptr));
        std::perror(program);
        _exit(127);
    }
    return child;
}

void stopProgram(pid_t child)
{
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
}

// Whether the middle of the window shows something other than the black of a window
// nobody has painted yet.
bool isPainted(xcb_connection_t* connection, xcb_window_t window)
{
    auto geometry =
        reply(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    if (!geometry || geometry->width < 2 || geometry->height < 2)
        return false;
    auto image = reply(xcb_get_image_reply(
        connection,
        xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, int16_t(geometry->width / 2),
                      int16_t(geometry->height / 2), 1, 1, 0x00FFFFFF),
        nullptr));
    if (!image)
        return false;
    const uint8_t* data = xcb_get_image_data(image.get());
    const int length = xcb_get_image_data_length(image.get());
    return std::any_of(data, data + std::min(length, 3), [](uint8_t byte) { return byte != 0; });
}

// Milliseconds from starting the program to its first window being ready for typing,
// or nothing after 10 seconds.
std::optional<double> measure(xcb_connection_t* connection, xcb_window_t root, const char* program)
{
    const Clock::time_point start = Clock::now();
    const pid_t child = startProgram(program);
    xcb_window_t mapped = XCB_NONE;
    std::optional<double> result;
    while (Clock::now() - start < std::chrono::seconds(10)) {
        while (xcb_generic_event_t* event = xcb_poll_for_event(connection)) {
            if ((event->response_type & 0x7F) == XCB_MAP_NOTIFY && mapped == XCB_NONE) {
                const auto* map = reinterpret_cast<xcb_map_notify_event_t*>(event);
                if (map->event == root && !map->override_redirect)
                    mapped = map->window;
            }
            std::free(event);
        }
        if (mapped != XCB_NONE && isPainted(connection, mapped)) {
            result = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
            break;
        }
        usleep(200);
    }
    stopProgram(child);
    // Let the windows of the stopped program go before the next run.
    xcb_flush(connection);
    usleep(200000);
    while (xcb_generic_event_t* event = xcb_poll_for_event(connection))
        std::free(event);
    return result;
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc < 3) {
        std::fprintf(stderr, "Usage: %s RUNS PROGRAM [PROGRAM...]\n", argv[0]);
        return 2;
    }
    const int runs = std::atoi(argv[1]);
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection)) {
        std::fprintf(stderr, "startup-probe: cannot connect to the X display\n");
        return 1;
    }
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(connection);

    int status = 0;
    for (int p = 2; p < argc; ++p) {
        const char* program = argv[p];
        std::vector<double> times;
        for (int run = 0; run <= runs; ++run) {
            const std::optional<double> time = measure(connection, root, program);
            if (!time) {
                std::fprintf(stderr, "startup-probe: %s showed no window ready for typing\n",
                             program);
                status = 1;
                break;
            }
            if (run > 0) // the first run only warms the caches
                times.push_back(*time);
        }
        if (times.empty())
            continue;
        std::sort(times.begin(), times.end());
        std::printf("%s median_ms=%.1f min_ms=%.1f max_ms=%.1f runs=%zu\n", program,
                    times[times.size() / 2], times.front(), times.back(), times.size());
    }
    xcb_disconnect(connection);
    return status;
}
