#!/usr/bin/env python3
"""A source that is lost again and again leaves neither descriptors nor memory, and no frame, on the way."""

import socket
import unittest

import harness

SENTENCE = b"$GNZDA,235700.00,18,05,2024,00,00*73\r\n"


class ReconnectTest(harness.Case):
    def check(self, program, serve, rounds):
        """`serve` sends the sentence over one connection, and ends it in one of several ways."""
        flat = []
        for number in range(rounds):
            serve(number)
            if number in (rounds // 5, rounds - 1):
                program.wait_for_lines(number + 1)
                flat.append((program.descriptors(), program.memory()))
        self.assertLessEqual(abs(flat[1][0] - flat[0][0]), 1)  # the connection that is being opened
        if not harness.IS_SANITIZED:
            self.assertLess(flat[1][1] - flat[0][1], 2048)
        program.end()
        self.assertEqual({frame["message"] for frame in program.objects()}, {"ZDA"})
        self.assertEqual(len(program.objects()), rounds)

    def end(self, connection, number):
        if number % 3 == 0:
            connection.shutdown(socket.SHUT_WR)
            connection.settimeout(harness.PATIENCE)
            connection.recv(1)
        elif number % 3 == 1:
            harness.reset(connection)
        connection.close()

    def test_connections_to_a_server(self):
        server = harness.listener()
        self.addCleanup(server.close)
        port = server.getsockname()[1]
        program = self.run_program("decode", "--retry-pause", "0.001", f"tcp://localhost:{port}")

        def serve(number):
            connection, _ = server.accept()
            connection.sendall(SENTENCE)
            program.wait_for_lines(number + 1)  # a reset drops what has not been read
            self.end(connection, number)
        self.check(program, serve, 1000)

    def test_connections_from_senders(self):
        port = harness.free_port()
        program = self.run_program("decode", f"tcp-listen://127.0.0.1:{port}")
        harness.wait_until_listening(port)

        def serve(number):
            connection = socket.create_connection(("127.0.0.1", port))
            connection.sendall(SENTENCE)
            program.wait_for_lines(number + 1)
            self.end(connection, number)
            program.wait(lambda p: sum("closed" in line or "reset" in line for line in p.lines["err"]) > number)
        self.check(program, serve, 40)  # at most five are taken in a second

    def test_terminals(self):
        terminal = self.terminal()
        program = self.run_program("decode", "--retry-pause", "0.001", terminal.name)

        def serve(number):
            if number:
                terminal.plug()
            terminal.wait_until_open()
            terminal.write(SENTENCE)
            program.wait_for_lines(number + 1)
            terminal.unplug()
        self.check(program, serve, 200)


if __name__ == "__main__":
    unittest.main()
