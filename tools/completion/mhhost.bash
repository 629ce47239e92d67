# bash completion for mhhost: commands, options, clients, sort and output forms, and the
# agent keys of the stores mhhost knows.
_mhhost() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
  case "$previous" in
    --client) COMPREPLY=($(compgen -W "eudora internet netscape pegasus" -- "$current")); return ;;
    --sort) COMPREPLY=($(compgen -W "newest oldest relevance" -- "$current")); return ;;
    --output) COMPREPLY=($(compgen -W "summary ids files json" -- "$current")); return ;;
    --attachments) COMPREPLY=($(compgen -W "on off" -- "$current")); return ;;
    --registry|--db|--mail-dir|--exe-dir|--dir) COMPREPLY=($(compgen -f -- "$current")); return ;;
    --key)
      local keys
      keys=$(mhhost status 2>/dev/null | grep -v '^ ' | grep '\\')
      COMPREPLY=($(compgen -W "$keys" -- "$current"))
      return ;;
  esac
  if [[ "$current" == -* ]]; then
    COMPREPLY=($(compgen -W "--help --version --client --key --registry --db --language --log
      --mail-dir --exe-dir --mail-ext --ctrl-ext --attachments --yes --stats --json --raw
      --count --offset --sort --output --limit --since --until --dir" -- "$current"))
  else
    COMPREPLY=($(compgen -W "config list index search show cat status demo help" -- "$current"))
  fi
}
complete -F _mhhost mhhost
