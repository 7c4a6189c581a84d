#include "platform/Translator.h"
#include "platform/posix/HttpEndpointModule.h"
#include "platform/posix/Installation.h"
#include "platform/posix/SharedLibrary.h"

namespace kalvex::platform {

namespace {

constexpr const char* kNoModule = Translatable("nie można załadować kalvex-health.so");

}  // namespace

std::unique_ptr<HttpEndpoint> LoadHttpEndpoint(MainLoop& loop, HttpText text, std::string& error) {
    static SharedLibrary module{(InstallationPrefix() / kHttpEndpointModule).c_str()};
    static const auto make = module.Find<HttpEndpointEntry*>(kHttpEndpointEntry);
    if (make == nullptr) {
        error = kNoModule;
        return nullptr;
    }
    return std::unique_ptr<HttpEndpoint>(make(loop, text));
}

}  // namespace kalvex::platform
