// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QtGlobal>
#include <memory>
#include <utility>

namespace ostrelle {

/// Settles who captions: single images, so many at once and in the order in which they came, or one run over
/// many images, alone. So no image is ever written by two, and a run's counters are its own. A run goes
/// before the images that wait. Turns may outlive the object.
class CaptionTurns {
    struct State;

public:
    /// A turn, held until it is destroyed.
    class Turn {
    public:
        Turn(std::shared_ptr<State> state, int places) : m_state(std::move(state)), m_places(places) {}
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        std::shared_ptr<State> m_state;
        int m_places;
    };

    /// Enough images at once to have a rendition ready for each request that becomes free.
    static constexpr int imagesAtOnce = 12;

    explicit CaptionTurns(int images = imagesAtOnce);

    /// Resumes when the image may begin; with null when it has been sent away.
    QCoro::Task<std::unique_ptr<Turn>> imageTurn();
    /// Resumes when the run may begin; with null when the turns have been closed.
    QCoro::Task<std::unique_ptr<Turn>> runTurn();
    /// True while a run has its turn.
    bool hasRun() const;
    /// How often images were sent away: one that waits elsewhere meanwhile is not to begin either.
    quint64 dismissals() const;

    /// Sends the images away that wait: they are not to begin. Those that have a turn finish.
    void dismissImages();
    /// Sends everybody away who waits or comes: the program ends. Images that have a turn finish, and a run
    /// stops before its next image.
    void close();
    bool isClosed() const;
    /// Resumes when nobody has a turn.
    QCoro::Task<> idle() const;

private:
    static QCoro::Task<std::unique_ptr<Turn>> wait(std::shared_ptr<State> state, int places);

    std::shared_ptr<State> m_state;
};

} // namespace ostrelle
