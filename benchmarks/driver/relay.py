"""A relay that lets every byte wait, so that a server on this machine is as far away as one abroad."""

import asyncio
import contextlib
import socket
import statistics
import threading
import time


async def _carry(reader, writer, delay):
    loop = asyncio.get_running_loop()
    while piece := await reader.read(1 << 18):
        loop.call_later(delay, writer.write, piece)
    loop.call_later(delay, writer.close)


async def _relay(ready, ended, target, delay):
    async def connected(reader, writer):
        with contextlib.suppress(OSError):
            far_reader, far_writer = await asyncio.open_connection("127.0.0.1", target, limit=1 << 20)
            await asyncio.gather(
                _carry(reader, far_writer, delay), _carry(far_reader, writer, delay)
            )

    server = await asyncio.start_server(connected, "127.0.0.1", 0, limit=1 << 20)
    async with server:
        ready(server.sockets[0].getsockname()[1])
        await ended.wait()


@contextlib.contextmanager
def running(target, round_trip):
    """The port of a relay to the port `target`, with so many seconds there and back."""
    loop = asyncio.new_event_loop()
    ended = asyncio.Event()
    port = []
    started = threading.Event()

    def ready(number):
        port.append(number)
        started.set()

    def serve():
        asyncio.set_event_loop(loop)
        loop.run_until_complete(_relay(ready, ended, target, round_trip / 2))
        for task in asyncio.all_tasks(loop):
            task.cancel()
        loop.run_until_complete(asyncio.sleep(0))
        loop.close()

    thread = threading.Thread(target=serve)
    thread.start()
    started.wait(10)
    try:
        yield port[0]
    finally:
        loop.call_soon_threadsafe(ended.set)
        thread.join()


@contextlib.contextmanager
def echoing():
    """The port of a server that sends back what comes, to one client after another."""
    with socket.create_server(("127.0.0.1", 0)) as listener:

        def serve():
            with contextlib.suppress(OSError):
                while True:
                    client, _ = listener.accept()
                    with client:
                        client.settimeout(30)
                        while piece := client.recv(64):
                            client.sendall(piece)

        thread = threading.Thread(target=serve)
        thread.start()
        try:
            yield listener.getsockname()[1]
        finally:
            listener.shutdown(socket.SHUT_RDWR)
            thread.join()


def round_trip_through(port):
    """The seconds that a byte takes to an echoing server behind the relay at `port` and back:
    what the relay was asked for, and what its event loop and the kernel add."""
    with socket.create_connection(("127.0.0.1", port)) as connection:
        times = []
        for _ in range(5):
            sent = time.perf_counter()
            connection.sendall(b".")
            connection.recv(1)
            times.append(time.perf_counter() - sent)
        connection.shutdown(socket.SHUT_WR)
        connection.recv(1)  # the other end's closing, so that nobody waits for this client
    return statistics.median(times)
