"""A Slurm cluster of one node, in a folder, for the time of a test."""

import os
import pathlib
import pwd
import secrets
import shutil
import socket
import subprocess
import time
from collections.abc import Callable

PROGRAMS = ("munged", "slurmctld", "slurmd", "sbatch", "squeue", "scontrol", "scancel")
SECONDS_TO_START = 30

# No accounting, no limits, no control groups: they would touch the machine outside of the folder.
CONFIGURATION = """
ClusterName=test
SlurmctldHost={host}(127.0.0.1)
AuthType=auth/munge
AuthInfo=socket={folder}/munge.socket
CredType=cred/munge
SlurmUser={user}
SlurmdUser={user}
SlurmctldPort={controller_port}
SlurmdPort={node_port}
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SelectType=select/cons_tres
MpiDefault=none
ReturnToService=2
KillWait=2
SchedulerParameters=batch_sched_delay=0,sched_interval=1
NodeName={host} NodeAddr=127.0.0.1 CPUs={processors}
PartitionName=test Nodes=ALL Default=YES State=UP
"""
CONTROL_GROUPS = """
CgroupPlugin=cgroup/v1
CgroupMountpoint={folder}/cgroup
CgroupAutomount=no
"""


def missing_programs() -> list[str]:
    return [name for name in PROGRAMS if shutil.which(name, path=search_path()) is None]


def search_path() -> str:
    return f"{os.environ['PATH']}:/usr/sbin:/sbin"


def user_name() -> str:
    return pwd.getpwuid(os.getuid()).pw_name


def free_ports(count: int) -> list[int]:
    sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(count)]
    ports = [each.getsockname()[1] for each in sockets]
    for each in sockets:
        each.close()
    return ports


class SlurmCluster:
    def __init__(self, folder: pathlib.Path):
        self.folder = folder
        self.environment = dict(os.environ, PATH=search_path(), SLURM_CONF=str(folder / "slurm.conf"))
        self.daemons: list[subprocess.Popen] = []

    def __enter__(self) -> "SlurmCluster":
        self._configure()
        try:
            files = [f"--{name}-file={self.folder}/munge.{name}" for name in ("key", "pid", "log", "seed")]
            self._start("munged", "--force", "--foreground", f"--socket={self.folder}/munge.socket", *files)
            self._wait((self.folder / "munge.socket").exists)
            self._start("slurmctld", "-D")
            self._start("slurmd", "-D")
            self._wait(lambda: "State=IDLE" in self.run("scontrol", "show", "node", check=False))
        except BaseException:
            self._stop()
            raise
        return self

    def __exit__(self, *_: object) -> None:
        self.run("scancel", "--full", "--user", user_name(), check=False)
        self._stop()

    def run(self, *command: str, check: bool = True) -> str:
        done = subprocess.run(
            command, env=self.environment, cwd=self.folder, capture_output=True, text=True, check=False, timeout=60
        )
        if check and done.returncode != 0:
            raise RuntimeError(f"{' '.join(command)}: {done.stderr}")
        return done.stdout

    def log(self) -> str:
        return "\n".join(path.read_text(errors="replace")[-2000:] for path in sorted(self.folder.glob("*.log")))

    def _configure(self) -> None:
        controller_port, node_port = free_ports(2)
        for name in ("state", "spool", "cgroup"):
            (self.folder / name).mkdir()
        key = self.folder / "munge.key"
        key.write_bytes(secrets.token_bytes(128))
        key.chmod(0o600)
        facts = {
            "folder": self.folder,
            "host": socket.gethostname().split(".")[0],
            "user": user_name(),
            "controller_port": controller_port,
            "node_port": node_port,
            "processors": os.cpu_count(),
        }
        (self.folder / "slurm.conf").write_text(CONFIGURATION.format(**facts), encoding="utf-8")
        (self.folder / "cgroup.conf").write_text(CONTROL_GROUPS.format(**facts), encoding="utf-8")

    def _start(self, program: str, *options: str) -> None:
        path = shutil.which(program, path=search_path())
        assert path is not None
        with (self.folder / f"{program}.log").open("wb") as log:
            daemon = subprocess.Popen(
                [path, *options],
                env=self.environment,
                cwd=self.folder,
                stdin=subprocess.DEVNULL,
                stdout=log,
                stderr=subprocess.STDOUT,
            )
        self.daemons.append(daemon)

    def _stop(self) -> None:
        for daemon in reversed(self.daemons):
            daemon.terminate()
            try:
                daemon.wait(20)
            except subprocess.TimeoutExpired:
                daemon.kill()
                daemon.wait()

    def _wait(self, ready: Callable[[], bool]) -> None:
        end = time.monotonic() + SECONDS_TO_START
        while not ready():
            if time.monotonic() > end or any(daemon.poll() is not None for daemon in self.daemons):
                raise RuntimeError(f"Slurm did not start:\n{self.log()}")
            time.sleep(0.2)
