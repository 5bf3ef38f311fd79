#pragma once

#include <QMainWindow>
#include <memory>

class LiveSetup;
class LoginPage;
class PanelService;
class ProfileStrip;
class QStackedWidget;
class RoomPanel;
class StatusLine;

// The broadcaster's window: the profile strip on top, the login page until someone is logged
// in, then going live beside the live room, and the status line at the bottom.
class PanelWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit PanelWindow(QWidget* parent = nullptr);
    ~PanelWindow() override;

    // The pages exist until the window has closed.
    LoginPage& loginPage() const { return *login_; }
    LiveSetup& liveSetup() const { return *setup_; }
    RoomPanel& roomPanel() const { return *room_; }
    ProfileStrip& profileStrip() const { return *profile_; }
    StatusLine& statusLine() const { return *status_; }
    bool isLoggedIn() const { return loggedIn_; }
    // True once the service is stopped and released and the window has closed.
    bool isShutDown() const { return !service_; }

protected:
    // Stops the service on its own thread first, so that closing never freezes the window.
    void closeEvent(QCloseEvent* event) override;

private:
    void startSession();

    std::unique_ptr<PanelService> service_;
    ProfileStrip* profile_;
    QStackedWidget* pages_;
    LoginPage* login_;
    LiveSetup* setup_;
    RoomPanel* room_;
    StatusLine* status_;
    bool loggedIn_ = false;
    bool closing_ = false;
};
