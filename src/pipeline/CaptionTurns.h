// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Overtaking.h"

#include <QCoroTask>
#include <memory>
#include <utility>

namespace ostrelle {

/// Schedules the captioning: single images, a limited number at a time and first come, first served, or one
/// run over many images, alone. So nothing in the program writes an image twice, and a run's counters are its
/// own. A run goes before waiting images. Turns may outlive the object. For the thread of the event loop
/// only.
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

    /// Enough images to have a rendition ready whenever a request becomes free.
    static constexpr int imagesAtOnce = 12;

    explicit CaptionTurns(int images = imagesAtOnce);

    /// Resumes when the image may begin, or with null when it is dismissed.
    QCoro::Task<std::unique_ptr<Turn>> imageTurn();
    /// Resumes when the run may begin, or with null when the turns are closed.
    QCoro::Task<std::unique_ptr<Turn>> runTurn();
    /// For an image that waits for something else: once dismissed, it must not begin.
    Overtaking::Mark imageMark() const { return m_dismissals.mark(); }

    /// Dismisses the waiting images: they do not begin. Those that have a turn finish.
    void dismissImages();
    /// Dismisses everything that waits or arrives later, as the program ends. Images that have a turn finish;
    /// a run stops before its next image or batch.
    void close();
    bool isClosed() const;

    /// Stops the run under way and what waits at the moment: what is in the works finishes, and nothing else
    /// begins. What arrives later begins as usual.
    void stop();
    /// While paused, what is in the works finishes and nothing else begins. A stop or the end resumes.
    void setPaused(bool paused);
    bool isPaused() const;
    /// For a run: whether it must begin no further image, as it is stopped or all is closed.
    bool isRunEnding() const;
    /// For a run that could be paused here. False when it must begin no further image.
    QCoro::Task<bool> mayGoOn() const;
    /// For images that follow each other: overtaken once they are stopped, or all is closed.
    Overtaking::Mark stopMark() const { return m_stops.mark(); }
    /// Resumes when all turns are over.
    QCoro::Task<> idle() const;

private:
    void dismissAll();
    static QCoro::Task<std::unique_ptr<Turn>> wait(std::shared_ptr<State> state, int places);

    std::shared_ptr<State> m_state;
    Overtaking m_dismissals;
    Overtaking m_stops;
};

} // namespace ostrelle
