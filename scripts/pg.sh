# Throwaway PostgreSQL cluster for the tests: sourced by test.sh.
# pg_start sets ZQRS_PG_HOST/PORT/USER; pg_stop removes the cluster.
# The tests connect through the socket directory. The same port also listens on 127.0.0.1 for
# encrypted connections only, with a certificate for 127.0.0.1 signed by a throwaway root made
# here (ZQRS_PG_TLS_HOST, ZQRS_PG_TLS_CA; ZQRS_PG_TLS_OTHER_CA is a root that signed nothing).

pg_bindir() { ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1; }

pg_as() {
  if [ "$(id -u)" -eq 0 ]; then runuser -u postgres -- "$@"; else "$@"; fi
}

pg_tls() {
  local dir=$1
  mkdir -p "$dir" && (
    cd "$dir" &&
      openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=zqrs test root" \
        -keyout ca.key -out ca.crt &&
      openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=zqrs other root" \
        -keyout other-ca.key -out other-ca.crt &&
      openssl req -newkey rsa:2048 -nodes -subj "/CN=127.0.0.1" -keyout server.key -out server.csr &&
      printf 'subjectAltName=IP:127.0.0.1\n' >san.ext &&
      openssl x509 -req -in server.csr -CA ca.crt -CAkey ca.key -CAcreateserial -days 2 \
        -extfile san.ext -out server.crt
  ) >"$dir/openssl.log" 2>&1 || { cat "$dir/openssl.log" >&2; return 1; }
  chmod 600 "$dir/server.key"
  [ "$(id -u)" -eq 0 ] && chown -R postgres: "$dir"
  return 0
}

pg_start() {
  local bin port
  bin=$(pg_bindir)
  [ -n "$bin" ] || { echo "test: no PostgreSQL server installed" >&2; return 1; }
  ZQ_PG_DIR=$(mktemp -d /tmp/zqpg.XXXXXX)
  [ "$(id -u)" -eq 0 ] && chown postgres: "$ZQ_PG_DIR"
  for port in $(seq 55432 55532); do
    [ -e "$ZQ_PG_DIR/.s.PGSQL.$port" ] && continue
    (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null && continue
    break
  done
  pg_as "$bin/initdb" -D "$ZQ_PG_DIR/data" -A trust -E UTF8 --locale=C.UTF-8 >"$ZQ_PG_DIR/initdb.log" 2>&1 ||
    pg_as "$bin/initdb" -D "$ZQ_PG_DIR/data" -A trust -E UTF8 >"$ZQ_PG_DIR/initdb.log" 2>&1 ||
    { cat "$ZQ_PG_DIR/initdb.log" >&2; return 1; }
  pg_tls "$ZQ_PG_DIR/tls" || return 1
  # Over TCP only encrypted sessions are let in.
  sed -i 's/^host /hostssl /' "$ZQ_PG_DIR/data/pg_hba.conf"
  pg_as "$bin/pg_ctl" -D "$ZQ_PG_DIR/data" -l "$ZQ_PG_DIR/server.log" -w -t 60 \
    -o "-c listen_addresses=127.0.0.1 -c unix_socket_directories=$ZQ_PG_DIR -p $port -c fsync=off -c synchronous_commit=off -c full_page_writes=off -c max_connections=200 -c ssl=on -c ssl_cert_file=$ZQ_PG_DIR/tls/server.crt -c ssl_key_file=$ZQ_PG_DIR/tls/server.key" \
    start >/dev/null || { cat "$ZQ_PG_DIR/server.log" >&2; return 1; }
  export ZQRS_PG_HOST="$ZQ_PG_DIR" ZQRS_PG_PORT="$port" ZQRS_PG_REQUIRED=1
  export ZQRS_PG_TLS_HOST=127.0.0.1 ZQRS_PG_TLS_CA="$ZQ_PG_DIR/tls/ca.crt"
  export ZQRS_PG_TLS_OTHER_CA="$ZQ_PG_DIR/tls/other-ca.crt"
  if [ "$(id -u)" -eq 0 ]; then export ZQRS_PG_USER=postgres; else export ZQRS_PG_USER="$(id -un)"; fi
  ZQ_PG_BIN="$bin"
}

pg_stop() {
  [ -n "${ZQ_PG_DIR:-}" ] || return 0
  pg_as "$ZQ_PG_BIN/pg_ctl" -D "$ZQ_PG_DIR/data" -m immediate stop >/dev/null 2>&1 || true
  rm -rf "$ZQ_PG_DIR"
  ZQ_PG_DIR=
}
