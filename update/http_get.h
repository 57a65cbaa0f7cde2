#pragma once

#include <QByteArray>
#include <QString>

// The seam between the download control and Qt's network stack, which lives in a
// module of its own (update/network/) that the program loads on its first download:
// linked into the program, the network stack and the libraries under it (Kerberos,
// proxy lookup, resolver) would be loaded and relocated at every start, while most
// starts never download anything.
//
// One request at a time. The listener hears of a request from the event loop, never
// from inside start() or cancel().
class HttpGet {
public:
    class Listener {
    public:
        // New bytes can be read.
        virtual void bytesArrived() = 0;
        // The request ended: errNum 0 when the whole page arrived, otherwise the
        // failure's number and description.
        virtual void finished(int errNum, const QString& errDesc) = 0;

    protected:
        ~Listener() = default;
    };

    virtual ~HttpGet() = default;
    // Cancels a running request and starts reading `url`; `bypassCaches` asks the
    // server itself, not a cached copy.
    virtual void start(const QString& url, bool bypassCaches) = 0;
    // Stops the running request; the listener hears nothing more of it.
    virtual void cancel() = 0;
    // At most maxBytes of what has arrived and was not read yet.
    virtual QByteArray read(qint64 maxBytes) = 0;
};

// The module's one entry point, looked up by this name.
using MakeHttpGet = HttpGet* (*)(HttpGet::Listener* listener);
inline constexpr char kMakeHttpGetSymbol[] = "veskorMakeHttpGet";
