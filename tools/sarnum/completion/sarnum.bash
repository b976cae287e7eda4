# bash completion of sarnum: commands, options, their values, and files.
_sarnum() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
  local conversion='--overwrite --co --picture --quiet --progress --help -q -h'
  local options word
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W 'detect multilook spectrum info stats --help --self-check --version -h' -- "$current")
    return
  fi
  case ${COMP_WORDS[1]} in
    detect) options="$conversion --amplitude --intensity --force" ;;
    multilook) options="$conversion --looks --square --spacing --incidence --nodata --from-db --to-db" ;;
    spectrum) options="$conversion --centred --inverse --nodata" ;;
    info) options='--json --intensity --amplitude --decibel --quiet --help -q -h' ;;
    stats) options='--json --quiet --progress --help -q -h' ;;
    *) return ;;
  esac
  case $previous in
    --looks) word='2x2 4x4 8x8' ;;
    --nodata) [[ ${COMP_WORDS[1]} == spectrum ]] && word=zero || word='skip average' ;;
    --co) word='COMPRESS=DEFLATE COMPRESS=ZSTD TILED=YES BIGTIFF=YES' ;;
    --spacing | --incidence) return ;;
    *) word= ;;
  esac
  if [[ -n $word ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$word" -- "$current")
  elif [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}
complete -F _sarnum sarnum
