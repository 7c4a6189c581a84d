#include "app/ProfileKeys.h"

namespace kalvex::app {

namespace {

constexpr ProfileKey kModuleKeys[] = {
    {Section::General, Key::Name},
    {Section::General, Key::RootFolder},
    {Section::General, Key::ConfigurationRight},
    {Section::General, Key::ControlRight},
    {Section::Windows, Key::TrayIcon, KeyForm::Number, 0, 1},
    {Section::Windows, Key::RefreshPeriod, KeyForm::Number, 10, 3600000},
    {Section::Windows, Key::Columns, KeyForm::Widths},
    {Section::Windows, Key::LogFont},
    {Section::Autostart, Key::Script, KeyForm::Scripts},
    {Section::Sources, Key::Source, KeyForm::Sources},
    {Section::Console, Key::LocalSocket},
    {Section::Console, Key::Group},
    {Section::Console, Key::Address},
    {Section::Console, Key::Certificate},
    {Section::Console, Key::CertificateKey},
    {Section::Console, Key::Authority},
    {Section::Console, Key::PlainText},
    {Section::Console, Key::Clients},
    {Section::Log, Key::LogLevel, KeyForm::Number, 0, 3},
};

constexpr ProfileKey kMachineKeys[] = {
    {Section::General, Key::AutoClient, KeyForm::Number, 0, 1},
    {Section::General, Key::Users},
    {Section::Servers, nullptr, KeyForm::AnyName},
    {Section::Encryption, Key::Authority},
    {Section::Encryption, Key::Certificate},
    {Section::Encryption, Key::CertificateKey},
    {Section::Encryption, Key::CertificateName},
    {Section::Encryption, Key::PlainText, KeyForm::Number, 0, 1},
    {Section::Server, Key::Authority},
    {Section::Server, Key::Certificate},
    {Section::Server, Key::CertificateKey},
    {Section::Server, Key::CertificateName},
    {Section::Server, Key::PlainText, KeyForm::Number, 0, 1},
};

}  // namespace

std::span<const ProfileKey> ModuleKeys() {
    return kModuleKeys;
}

std::span<const ProfileKey> MachineKeys() {
    return kMachineKeys;
}

}  // namespace kalvex::app
