# bash completion for jtpdf(1)

_jtpdf() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words=
  COMPREPLY=()
  case $previous in
    -S | --pagesize) words='A3 A4 A5 Letter Legal A4^T' ;;
    -s | --imgsize) words='300dpi 150dpi 100% 50%' ;;
    -f | --fit) words='into fill exact shrink enlarge' ;;
    -r | --rotation) words='auto none 0 90 180 270' ;;
    --role) words='photo text background mask border clipart alpha shape other' ;;
    --compression) words='0 1 2 3 4 5 6 7 8 9 10 11 12' ;;
    --viewer-panes) words='outlines thumbs none' ;;
    --viewer-magnification) words='fit fith fitbh 100%' ;;
    --viewer-page-layout)
      words='single onecolumn twocolumnleft twocolumnright twopageleft twopageright' ;;
    --nup) words='1x2 2x2 2x3 3x4' ;;
    -b | --*border) words='5mm 1cm 1cm:2cm' ;;
    -j | --jobs | --max-pixels | --max-input | --title | --author | --subject | --keywords | \
      --creator | --creationdate | --moddate | --viewer-initial-page) return ;;
    -o | --output | --from-file) ;;
    *)
      if [[ $current == -* ]]; then
        words='--output --from-file --pagesize --imgsize --border --fit --auto-orient
          --crop-border --bleed-border --trim-border --art-border --nup --rotation --title --author --subject --keywords --creator --creationdate
          --moddate --role --record-names --bookmarks --first-frame-only --all-frames
          --viewer-panes --viewer-initial-page --viewer-magnification --viewer-page-layout
          --viewer-fit-window --viewer-center-window --viewer-fullscreen --jobs --compression --optimize --max-pixels --max-input --skip-bad
          --dry-run --quiet --verbose --help --version'
      fi
      ;;
  esac
  if [[ -n $words ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}

complete -F _jtpdf jtpdf
