#pragma once

#include <cstdint>
#include <string>

// Diagnostic trail that every HTTP request leaves with the host.
struct VxBreadcrumbBase {
    virtual ~VxBreadcrumbBase() = default;
    int32_t category = 0;
    std::string message;
    int32_t level = 0;
    std::string data;
};

struct VxBreadcrumb_Http {
    std::string url;
    std::string method;
    int32_t statusCode = 200;
    std::string errorText;
};

template <typename Part>
struct VxBreadcrumb : VxBreadcrumbBase {
    Part part;
};

// Implemented by the host. Called synchronously on the thread that sent the request;
// the record belongs to the module and is valid only during the call.
class BreadcrumbSink {
public:
    virtual void onBreadcrumb(const VxBreadcrumb<VxBreadcrumb_Http>& crumb) = 0;

protected:
    ~BreadcrumbSink() = default;
};
